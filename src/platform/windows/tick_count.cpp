// The compiler's thread library calls GetTickCount64, which Windows XP lacks, through this pointer.
// Without this definition the linker would import it from the system's library.
#include <windows.h>

namespace {

// Milliseconds since the system was started.
ULONGLONG WINAPI TickCount() {
    LARGE_INTEGER count, countsPerSecond;
    ::QueryPerformanceCounter(&count);
    ::QueryPerformanceFrequency(&countsPerSecond);
    auto seconds = count.QuadPart / countsPerSecond.QuadPart;
    auto rest = count.QuadPart % countsPerSecond.QuadPart;
    return static_cast<ULONGLONG>(seconds * 1000 + rest * 1000 / countsPerSecond.QuadPart);
}

}  // namespace

extern "C" {
extern ULONGLONG(WINAPI* const TickCountPointer)() asm("__imp__GetTickCount64@0");
ULONGLONG(WINAPI* const TickCountPointer)() = TickCount;
}
