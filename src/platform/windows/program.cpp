// The process, its clock and its folder.
#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr std::size_t LongestPath = 32768;

// Uses the folder's short name if the code page lacks some of its letters.
std::wstring ExecutablePath() {
    std::wstring path(LongestPath, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), LongestPath));
    if (HoldsPath(path)) return path;
    std::wstring shortPath(LongestPath, L'\0');
    shortPath.resize(::GetShortPathNameW(path.c_str(), shortPath.data(), LongestPath));
    return shortPath.empty() ? path : shortPath;
}

std::string InAnsi(const std::wstring& text) {
    std::string ansi(text.size() * 4, '\0');
    ansi.resize(static_cast<std::size_t>(
        ::WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()), ansi.data(),
                              static_cast<int>(ansi.size()), nullptr, nullptr)));
    return ansi;
}

std::string InstanceName(const char* program) {
    return std::string("Local\\FS2002 Quirkmeter ") + program;
}

// The name of the mapping that holds the process id of an instance, and ends with it.
std::string ProcessName(const char* program) {
    return InstanceName(program) + " process";
}

constexpr std::uint32_t UnknownProcess = 1;  // the real ones are multiples of four

bool PublishProcess(const char* program) {
    HANDLE memory = ::CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                         sizeof(DWORD), ProcessName(program).c_str());
    auto* process = static_cast<volatile DWORD*>(::MapViewOfFile(memory, FILE_MAP_WRITE, 0, 0, 0));
    if (process) *process = ::GetCurrentProcessId();
    return process;
}

}  // namespace

std::uint32_t GetCurrentProcessId() {
    return ::GetCurrentProcessId();
}

void Sleep(std::uint32_t milliseconds) {
    ::Sleep(milliseconds);
}

double SecondsSinceMidnight() {
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    return now.wHour * 3600 + now.wMinute * 60 + now.wSecond + now.wMilliseconds / 1000.0;
}

InstanceClaim ClaimSingleInstance(const char* program) {
    static InstanceClaim claim = [program] {
        HANDLE mutex = ::CreateMutexA(nullptr, FALSE, InstanceName(program).c_str());
        // A process without administrator's rights cannot open the objects of an instance with them.
        if (!mutex)
            return ::GetLastError() == ERROR_ACCESS_DENIED ? InstanceClaim::Taken
                                                           : InstanceClaim::Failed;
        // Take ownership: another process may hold the mutex open only to check whether we run.
        bool free = ::WaitForSingleObject(mutex, 0) != WAIT_TIMEOUT;
        if (!free) ::CloseHandle(mutex);
        if (!free) return InstanceClaim::Taken;
        return PublishProcess(program) ? InstanceClaim::Claimed : InstanceClaim::Failed;
    }();
    return claim;
}

std::optional<std::uint32_t> InstanceProcess(const char* program) {
    HANDLE memory = ::OpenFileMappingA(FILE_MAP_READ, FALSE, ProcessName(program).c_str());
    // As above.
    if (!memory) return ::GetLastError() == ERROR_ACCESS_DENIED ? UnknownProcess : 0;
    auto* view = static_cast<const DWORD*>(::MapViewOfFile(memory, FILE_MAP_READ, 0, 0, 0));
    DWORD process = view ? *view : UnknownProcess;
    ::UnmapViewOfFile(view);
    ::CloseHandle(memory);
    return process;
}

std::string LastErrorText() {
    char text[512];
    DWORD length = ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                    nullptr, ::GetLastError(), 0, text, sizeof text, nullptr);
    return {text, length};
}

std::string ProgramFile(std::string_view name) {
    static std::string folder = [] {
        std::string path = InAnsi(ExecutablePath());
        return path.substr(0, path.size() - FileName(path).size() - 1);
    }();
    return folder + std::string(name);
}

std::string FileName(const std::string& path) {
    const char* name = path.c_str();
    // The second byte of a double-byte character may look like a backslash, so this walks through
    // the characters.
    for (const char* at = name; *at != '\0'; at = ::CharNextA(at))
        if (*at == '\\' || *at == '/') name = at + 1;
    return name;
}

bool FileExists(const std::string& path) {
    return ::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Windows itself allows no control characters in a path.
bool HoldsPath(const std::wstring& path) {
    BOOL replaced = FALSE;
    ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.c_str(), -1, nullptr, 0, nullptr,
                          &replaced);
    return !replaced;
}

char DecimalSeparator() {
    static char separator = [] {
        char text[8];
        int length = ::GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, text, sizeof text);
        return length == 2 ? text[0] : '.';  // with the zero behind it
    }();
    return separator;
}

}  // namespace quirkmeter::platform
