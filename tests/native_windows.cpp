#include <windows.h>

#include <algorithm>

#include "native.h"

namespace quirkmeter::native {

namespace {

wxString TextOf(HWND window) {
    wchar_t text[1024] = L"";
    ::GetWindowTextW(window, text, std::size(text));
    return text;
}

// The window of a message box or file dialog, which wxWidgets does not know; null when none has the
// keyboard focus.
HWND SystemsDialog() {
    HWND window = ::GetForegroundWindow();
    bool ours = ::GetWindowThreadProcessId(window, nullptr) == ::GetCurrentThreadId();
    auto isWindow = [window](wxWindow* known) { return known->GetHandle() == window; };
    return ours && std::ranges::none_of(wxTopLevelWindows, isWindow) ? window : nullptr;
}

}  // namespace

wxString Text(const wxWindow* window) {
    return TextOf(window->GetHandle());
}

// Skips the icon of a message box, a static control without a text.
wxString Text(const wxMessageDialogBase*) {
    HWND text = nullptr;
    do text = ::FindWindowExW(SystemsDialog(), text, L"Static", nullptr);
    while (text && TextOf(text).empty());
    return TextOf(text);
}

bool ShowsWarning(const wxMessageDialogBase*) {
    HWND icon = nullptr;
    do icon = ::FindWindowExW(SystemsDialog(), icon, L"Static", nullptr);
    while (icon && (::GetWindowLongW(icon, GWL_STYLE) & SS_TYPEMASK) != SS_ICON);
    return ::SendMessageW(icon, STM_GETICON, 0, 0) != 0;  // Wine also has an icon without a picture
}

bool HasKeyboard(const wxTopLevelWindow* window) {
    HWND own = window->GetHandle();
    return own ? ::GetForegroundWindow() == own : SystemsDialog() != nullptr;
}

bool ShowsFile(const wxFileDialog*, const std::string&) {
    return true;
}

void PreferDarkTheme(bool) {}

wxColour ColourAt(wxPoint place) {
    HDC display = ::GetDC(nullptr);
    COLORREF colour = ::GetPixel(display, place.x, place.y);
    ::ReleaseDC(nullptr, display);
    return {GetRValue(colour), GetGValue(colour), GetBValue(colour)};
}

void TypeFileName(wxUIActionSimulator& keyboard, const std::string& name) {
    keyboard.Char(WXK_HOME);
    keyboard.Char(WXK_END, wxMOD_SHIFT);
    keyboard.Text(name.c_str());
}

void Accept(wxUIActionSimulator& keyboard, const wxFileDialog*) {
    keyboard.Char(WXK_RETURN);
}

void Dismiss(const wxDialog*) {
    ::PostMessageW(SystemsDialog(), WM_COMMAND, IDCANCEL, 0);
}

}  // namespace quirkmeter::native
