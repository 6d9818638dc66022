// What a test holds in its hands when it links the in-process platform: the clock, the keyboard,
// the program's folder, the outcome of every call to the outside, and what was asked of it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quirkmeter::platform::inprocess {

/// Back to the start: noon, nothing open, no faults, a point as decimal separator.
void Reset();

/// The clock stands still but for Sleep and this.
void AdvanceClock(double seconds);
/// Seconds since Reset.
double Elapsed();
/// What happens meanwhile, at every Sleep.
void WhenAsleep(std::function<void()> act);

/// From now on, the `nth` call (from 1) of the function of that name and the `count` - 1 after it
/// fail as the function's contract says, with this last error.
void FailCalls(std::string_view function, int nth, int count, std::uint32_t lastError);
int CallCount(std::string_view function);

/// The last call of SendMessageTimeoutA, the window and the message aside.
struct SendCall {
    std::uintptr_t WParam;
    std::intptr_t LParam;
    std::uint32_t Flags, TimeoutMilliseconds;
    bool operator==(const SendCall&) const = default;
};
SendCall LastSend();

/// What is held: windows, atom references, mapping handles and mapped views.
int HeldObjects();

/// What GetAsyncKeyState answers, until set anew.
void SetKey(int virtualKey, std::int16_t state);

/// The files whose sound was started, without their folder; "waited for" stands behind one that was
/// not played in the background.
std::vector<std::string> TakeSounds();

struct ShellRun {
    std::string Operation, File, Parameters, Directory;
    int ShowCommand;
    bool operator==(const ShellRun&) const = default;
};
std::vector<ShellRun> TakeShellRuns();

/// The process with the claim of that name, 0 for none.
void SetInstanceProcess(const std::string& program, std::uint32_t process);

void SetProgramFolder(const std::string& folder);
void SetDecimalSeparator(char separator);

}  // namespace quirkmeter::platform::inprocess
