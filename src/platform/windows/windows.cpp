#include <windows.h>

#include <atomic>
#include <map>
#include <memory>
#include <utility>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr int ProgramIcon = 1;  // its number in every program

thread_local std::map<HWND, std::shared_ptr<MessageHandler>> Handlers;
std::atomic<bool> CloseRequested = false;

HWND Native(WindowHandle window) {
    return reinterpret_cast<HWND>(window);
}

LRESULT CALLBACK OwnedWindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto found = Handlers.find(window);
    if (message >= 0xC000 && message <= 0xFFFF && found != Handlers.end()) {
        auto handler = found->second;  // stays valid if it drops its own window
        return (*handler)(message, wParam, lParam);
    }
    if (message == WM_CLOSE) {
        CloseRequested = true;
        return 0;
    }
    return ::DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

WindowHandle FindWindowExA(WindowHandle parent, WindowHandle childAfter, const char* className,
                           const char* title) {
    HWND window = ::FindWindowExA(Native(parent), Native(childAfter), className, title);
    if (!window) ::SetLastError(ERROR_SUCCESS);  // the search itself cannot fail
    return reinterpret_cast<WindowHandle>(window);
}

WindowHandle FindWindowA(const char* className, const char* title) {
    return FindWindowExA(0, 0, className, title);
}

std::uint32_t RegisterWindowMessageA(const char* name) {
    return ::RegisterWindowMessageA(name);
}

std::intptr_t SendMessageTimeoutA(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                  std::intptr_t lParam, std::uint32_t flags,
                                  std::uint32_t timeoutMilliseconds, std::uintptr_t* reply) {
    DWORD_PTR answer = 0;
    ::SetLastError(ERROR_SUCCESS);  // so that an older error does not count as this call's
    LRESULT sent = ::SendMessageTimeoutA(Native(window), message, wParam, lParam, flags,
                                         timeoutMilliseconds, &answer);
    if (sent != 0) {
        if (reply) *reply = answer;
    } else if (::GetLastError() == ERROR_TIMEOUT) {
        ::SetLastError(ERROR_SUCCESS);  // as on older systems
    }
    return sent;
}

WindowHandle OwnWindow(const char* className, const char* title, MessageHandler handler) {
    WNDCLASSEXA windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = OwnedWindowProcedure;
    windowClass.hInstance = ::GetModuleHandleA(nullptr);
    windowClass.hIcon = ::LoadIconA(windowClass.hInstance, MAKEINTRESOURCEA(ProgramIcon));
    windowClass.lpszClassName = className;
    ::RegisterClassExA(&windowClass);  // fails without harm if it is registered already
    HWND window = ::CreateWindowExA(0, className, title, WS_OVERLAPPEDWINDOW, 0, 0, 0, 0, nullptr,
                                    nullptr, windowClass.hInstance, nullptr);
    if (window) Handlers[window] = std::make_shared<MessageHandler>(std::move(handler));
    return reinterpret_cast<WindowHandle>(window);
}

void DropWindow(WindowHandle window) {
    Handlers.erase(Native(window));
    ::DestroyWindow(Native(window));
}

void ShowInTaskBar(WindowHandle window) {
    ::ShowWindow(Native(window), SW_SHOWMINNOACTIVE);
}

void ServeMessages(std::uint32_t milliseconds) {
    ::MsgWaitForMultipleObjectsEx(0, nullptr, milliseconds, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    MSG message;
    // Sent messages are answered inside of PeekMessageA.
    while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageA(&message);
}

bool TerminationRequested() {
    return CloseRequested;
}

}  // namespace quirkmeter::platform
