#include <windows.h>
#include <wx/msw/private.h>

#include "native.h"

namespace quirkmeter::native {

namespace {

wxString TextOf(HWND window) {
    wchar_t text[1024] = L"";
    ::GetWindowTextW(window, text, std::size(text));
    return text;
}

// The toolkit does not know the window of a message box or file dialog. None: the keyboard is in
// no such window.
HWND SystemsDialog() {
    HWND window = ::GetForegroundWindow();
    bool ours = ::GetWindowThreadProcessId(window, nullptr) == ::GetCurrentThreadId();
    return ours && !wxFindWinFromHandle(window) ? window : nullptr;
}

}  // namespace

wxString Text(const wxWindow* window) {
    return TextOf(window->GetHandle());
}

wxString Text(const wxMessageDialogBase*) {
    constexpr int BoxText = 0xFFFF;
    return TextOf(::GetDlgItem(SystemsDialog(), BoxText));
}

bool HasKeyboard(const wxTopLevelWindow* window) {
    HWND own = window->GetHandle();
    return own ? ::GetForegroundWindow() == own : SystemsDialog() != nullptr;
}

bool ShowsFile(const wxFileDialog*, const std::string&) {
    return true;
}

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
