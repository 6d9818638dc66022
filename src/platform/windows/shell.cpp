// The keyboard, sounds, and opening documents and programs.
#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

std::int16_t GetAsyncKeyState(int virtualKey) {
    return ::GetAsyncKeyState(virtualKey);
}

bool sndPlaySoundA(const char* path, std::uint32_t flags) {
    return ::sndPlaySoundA(path, flags);
}

std::intptr_t ShellExecuteA(WindowHandle owner, const char* operation, const char* file,
                            const char* parameters, const char* directory, int showCommand) {
    return reinterpret_cast<std::intptr_t>(::ShellExecuteA(
        reinterpret_cast<HWND>(owner), operation, file, parameters, directory, showCommand));
}

}  // namespace quirkmeter::platform
