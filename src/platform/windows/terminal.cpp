#include <io.h>
#include <windows.h>

#include <iterator>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

bool OwnConsole() {
    DWORD processes[2];
    return ::GetConsoleProcessList(processes, std::size(processes)) == 1;
}

}  // namespace

bool OnTerminal(int stream) {
    return ::_isatty(stream) != 0 && !OwnConsole();
}

void CloseOwnConsole() {
    if (OwnConsole()) ::FreeConsole();
}

bool OutputRedirected() {
    DWORD type = ::GetFileType(::GetStdHandle(STD_OUTPUT_HANDLE));
    return type == FILE_TYPE_DISK || type == FILE_TYPE_PIPE;
}

bool IsStream(const std::string& path) {
    char full[MAX_PATH];
    DWORD length = ::GetFullPathNameA(path.c_str(), MAX_PATH, full, nullptr);
    // Device names such as NUL resolve to paths below it.
    return length > 0 && length < MAX_PATH && std::string_view(full).starts_with(R"(\\.\)");
}

}  // namespace quirkmeter::platform
