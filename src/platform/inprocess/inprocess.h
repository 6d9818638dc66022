// A test's control of the in-process platform: the clock, the keyboard, the program's folder and the
// result of each call; and a record of the calls.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quirkmeter::platform::inprocess {

/// Resets the platform: noon, nothing open, no faults, a point as decimal separator.
void Reset();

/// Advances the clock, which otherwise only Sleep does.
void AdvanceClock(double seconds);
/// Seconds since Reset.
double Elapsed();
/// Runs `act` at every Sleep.
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

/// The number of objects held: windows, atom references, mapping handles and mapped views.
int HeldObjects();

/// Sets the answer of GetAsyncKeyState for the key.
void SetKey(int virtualKey, std::int16_t state);

/// The file names of the sounds that were started. " waited for" follows a sound that was not played
/// in the background.
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
