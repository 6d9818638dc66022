#include "platform/platform.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "platform/inprocess/inprocess.h"

namespace quirkmeter::platform {

namespace {

struct Window {
    std::string ClassName, Title;
    MessageHandler Handler;
};

struct Atom {
    std::string Name;
    int References = 0;
};

struct Memory {
    std::string Name;
    std::vector<std::uint64_t> Words;  // for their alignment
    std::size_t Size = 0;
};

struct Fault {
    int First, Last;
    std::uint32_t LastError;
};

constexpr std::uint16_t FirstAtom = 0xC000;

struct World {
    double Start = 12 * 3600;
    double Clock = 12 * 3600;
    std::function<void()> Asleep;
    std::uint32_t LastError = ErrorSuccess;
    std::uintptr_t NextHandle = 1;
    std::map<WindowHandle, Window> Windows;
    std::vector<std::string> Messages;
    std::map<std::uint16_t, Atom> Atoms;
    std::map<MappingHandle, std::shared_ptr<Memory>> Mappings;
    std::vector<std::shared_ptr<Memory>> Views;
    std::map<std::string, int, std::less<>> Calls;
    std::map<std::string, Fault, std::less<>> Faults;
    inprocess::SendCall LastSend{};
    std::map<int, std::int16_t> Keys;
    std::map<std::string, std::uint32_t, std::less<>> Instances;
    std::vector<std::string> Sounds;
    std::vector<inprocess::ShellRun> ShellRuns;
    std::string Folder = ".";
    char Separator = '.';
};

World TheWorld;

// Counts the call. True when a test wants it to fail; sets the last error that the test wants.
bool Fails(std::string_view function) {
    int number = ++TheWorld.Calls[std::string(function)];
    auto fault = TheWorld.Faults.find(function);
    if (fault == TheWorld.Faults.end() || number < fault->second.First ||
        number > fault->second.Last)
        return false;
    TheWorld.LastError = fault->second.LastError;
    return true;
}

bool SameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::shared_ptr<Memory> FindMemory(const char* name) {
    for (auto& [handle, memory] : TheWorld.Mappings)
        if (memory->Name == name) return memory;
    for (auto& memory : TheWorld.Views)
        if (memory->Name == name) return memory;
    return nullptr;
}

MappingHandle NewHandle(std::shared_ptr<Memory> memory) {
    MappingHandle handle = TheWorld.NextHandle++;
    TheWorld.Mappings.emplace(handle, std::move(memory));
    return handle;
}

auto FindView(const void* view) {
    return std::ranges::find_if(TheWorld.Views, [view](const std::shared_ptr<Memory>& memory) {
        return memory->Words.data() == view;
    });
}

}  // namespace

namespace inprocess {

void Reset() {
    TheWorld = {};
}

void AdvanceClock(double seconds) {
    TheWorld.Clock += seconds;
}

double Elapsed() {
    return TheWorld.Clock - TheWorld.Start;
}

void WhenAsleep(std::function<void()> act) {
    TheWorld.Asleep = std::move(act);
}

void FailCalls(std::string_view function, int nth, int count, std::uint32_t lastError) {
    int first = CallCount(function) + nth;
    TheWorld.Faults.insert_or_assign(std::string(function),
                                     Fault{first, first + count - 1, lastError});
}

int CallCount(std::string_view function) {
    auto call = TheWorld.Calls.find(function);
    return call == TheWorld.Calls.end() ? 0 : call->second;
}

SendCall LastSend() {
    return TheWorld.LastSend;
}

int HeldObjects() {
    std::size_t count = TheWorld.Windows.size() + TheWorld.Mappings.size() + TheWorld.Views.size();
    for (auto& [number, atom] : TheWorld.Atoms) count += static_cast<std::size_t>(atom.References);
    return static_cast<int>(count);
}

void SetKey(int virtualKey, std::int16_t state) {
    TheWorld.Keys[virtualKey] = state;
}

std::vector<std::string> TakeSounds() {
    return std::exchange(TheWorld.Sounds, {});
}

std::vector<ShellRun> TakeShellRuns() {
    return std::exchange(TheWorld.ShellRuns, {});
}

void SetInstanceProcess(const std::string& program, std::uint32_t process) {
    TheWorld.Instances[program] = process;
}

void SetProgramFolder(const std::string& folder) {
    TheWorld.Folder = folder;
}

void SetDecimalSeparator(char separator) {
    TheWorld.Separator = separator;
}

}  // namespace inprocess

WindowHandle FindWindowExA(WindowHandle, WindowHandle, const char* className, const char* title) {
    if (Fails("FindWindowExA")) return 0;
    for (auto& [handle, window] : TheWorld.Windows)
        if (SameName(window.ClassName, className) && (!title || window.Title == title))
            return handle;
    TheWorld.LastError = ErrorSuccess;
    return 0;
}

WindowHandle FindWindowA(const char* className, const char* title) {
    if (Fails("FindWindowA")) return 0;
    return FindWindowExA(0, 0, className, title);
}

std::uint32_t RegisterWindowMessageA(const char* name) {
    if (Fails("RegisterWindowMessageA")) return 0;
    auto& messages = TheWorld.Messages;
    auto found = std::ranges::find_if(
        messages, [name](const std::string& message) { return SameName(message, name); });
    if (found == messages.end()) found = messages.insert(found, name);
    return FirstAtom + static_cast<std::uint32_t>(found - messages.begin());
}

std::intptr_t SendMessageTimeoutA(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                  std::intptr_t lParam, std::uint32_t flags,
                                  std::uint32_t timeoutMilliseconds, std::uintptr_t* reply) {
    TheWorld.LastSend = {wParam, lParam, flags, timeoutMilliseconds};
    if (Fails("SendMessageTimeoutA")) return 0;
    auto found = TheWorld.Windows.find(window);
    if (found == TheWorld.Windows.end()) {
        TheWorld.LastError = ErrorInvalidWindowHandle;
        return 0;
    }
    *reply = static_cast<std::uintptr_t>(found->second.Handler(message, wParam, lParam));
    return 1;
}

WindowHandle OwnWindow(const char* className, const char* title, MessageHandler handler) {
    if (Fails("OwnWindow")) return 0;
    WindowHandle handle = TheWorld.NextHandle++;
    TheWorld.Windows.emplace(handle, Window{className, title, std::move(handler)});
    return handle;
}

void DropWindow(WindowHandle window) {
    TheWorld.Windows.erase(window);
}

void ShowInTaskBar(WindowHandle) {}

void ServeMessages(std::uint32_t milliseconds) {
    Sleep(milliseconds);
}

std::uint32_t GetCurrentProcessId() {
    return 0x1A4;
}

std::uint16_t GlobalAddAtomA(const char* name) {
    if (Fails("GlobalAddAtomA")) return 0;
    std::uint16_t free = FirstAtom;
    for (auto& [number, atom] : TheWorld.Atoms) {
        if (SameName(atom.Name, name)) {
            ++atom.References;
            return number;
        }
        if (number == free) ++free;
    }
    TheWorld.Atoms[free] = {name, 1};
    return free;
}

std::uint16_t GlobalDeleteAtom(std::uint16_t number) {
    auto found = TheWorld.Atoms.find(number);
    if (found == TheWorld.Atoms.end()) return number;
    if (--found->second.References == 0) TheWorld.Atoms.erase(found);
    return 0;
}

std::uint32_t GlobalGetAtomNameA(std::uint16_t number, char* buffer, int size) {
    auto found = TheWorld.Atoms.find(number);
    if (found == TheWorld.Atoms.end() || size < 1) return 0;
    std::size_t length = found->second.Name.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = 0;
    return static_cast<std::uint32_t>(length);
}

MappingHandle CreateFileMappingA(MappingHandle, void*, std::uint32_t, std::uint32_t,
                                 std::uint32_t sizeLow, const char* name) {
    if (Fails("CreateFileMappingA")) return 0;
    if (auto existing = FindMemory(name)) {
        TheWorld.LastError = ErrorAlreadyExists;
        return NewHandle(std::move(existing));
    }
    auto memory = std::make_shared<Memory>();
    memory->Name = name;
    memory->Size = sizeLow;
    memory->Words.resize((sizeLow + 7) / 8);
    TheWorld.LastError = ErrorSuccess;
    return NewHandle(std::move(memory));
}

MappingHandle OpenFileMappingA(std::uint32_t, bool, const char* name) {
    if (Fails("OpenFileMappingA")) return 0;
    auto existing = FindMemory(name);
    if (!existing) {
        TheWorld.LastError = ErrorFileNotFound;
        return 0;
    }
    return NewHandle(std::move(existing));
}

void* MapViewOfFile(MappingHandle mapping, std::uint32_t, std::uint32_t, std::uint32_t,
                    std::size_t) {
    if (Fails("MapViewOfFile")) return nullptr;
    auto found = TheWorld.Mappings.find(mapping);
    if (found == TheWorld.Mappings.end()) {
        TheWorld.LastError = ErrorInvalidHandle;
        return nullptr;
    }
    TheWorld.Views.push_back(found->second);
    return found->second->Words.data();
}

bool UnmapViewOfFile(const void* view) {
    auto found = FindView(view);
    if (found == TheWorld.Views.end()) return false;
    TheWorld.Views.erase(found);
    return true;
}

std::size_t ViewSize(const void* view) {
    auto found = FindView(view);
    return found == TheWorld.Views.end() ? 0 : (*found)->Size;
}

bool CloseHandle(MappingHandle handle) {
    return TheWorld.Mappings.erase(handle) != 0;
}

std::uint32_t GetLastError() {
    return TheWorld.LastError;
}

void Sleep(std::uint32_t milliseconds) {
    Fails("Sleep");
    TheWorld.Clock += milliseconds / 1000.0;
    if (TheWorld.Asleep) TheWorld.Asleep();
}

double SecondsSinceMidnight() {
    return std::fmod(TheWorld.Clock, 86400);
}

std::int16_t GetAsyncKeyState(int virtualKey) {
    Fails("GetAsyncKeyState");
    auto key = TheWorld.Keys.find(virtualKey);
    return key == TheWorld.Keys.end() ? std::int16_t{0} : key->second;
}

bool sndPlaySoundA(const char* path, std::uint32_t flags) {
    if (Fails("sndPlaySoundA")) return false;
    TheWorld.Sounds.push_back(FileName(path) + (flags == SoundAsync ? "" : " waited for"));
    return true;
}

std::intptr_t ShellExecuteA(WindowHandle, const char* operation, const char* file,
                            const char* parameters, const char* directory, int showCommand) {
    TheWorld.ShellRuns.push_back({operation, file, parameters, directory, showCommand});
    if (Fails("ShellExecuteA")) return static_cast<std::intptr_t>(TheWorld.LastError);
    return FileExists(file) ? 33 : 2;
}

InstanceClaim ClaimSingleInstance(const char*) {
    if (!Fails("ClaimSingleInstance")) return InstanceClaim::Claimed;
    return TheWorld.LastError == ErrorSuccess ? InstanceClaim::Taken : InstanceClaim::Failed;
}

std::optional<std::uint32_t> InstanceProcess(const char* program) {
    if (Fails("InstanceProcess")) {
        if (TheWorld.LastError != ErrorSuccess) return std::nullopt;
        return 0;
    }
    auto instance = TheWorld.Instances.find(program);
    return instance == TheWorld.Instances.end() ? 0 : instance->second;
}

std::string LastErrorText() {
    return "Error " + std::to_string(TheWorld.LastError) + ".";
}

bool TerminationRequested() {
    return false;
}

std::string ProgramFile(std::string_view name) {
    return (std::filesystem::path(TheWorld.Folder) / name.substr(1)).string();
}

std::string FileName(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

bool FileExists(const std::string& path) {
    if (Fails("FileExists")) return false;
    std::error_code error;
    return std::filesystem::exists(path, error);
}

double TextScale() {
    return 1;
}

void Describe(WindowHandle, ControlKind, const std::wstring&, const std::wstring&) {}

bool HoldsPath(const std::wstring&) {
    return !Fails("HoldsPath");
}

char DecimalSeparator() {
    return TheWorld.Separator;
}

bool ReplaceFile(const std::string& path, std::string_view content) {
    if (Fails("ReplaceFile")) return false;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    return file.good();
}

bool CanReplaceFile(const std::string&) {
    return !Fails("CanReplaceFile");
}

}  // namespace quirkmeter::platform
