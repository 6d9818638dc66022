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

}  // namespace quirkmeter::platform
