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

// The icon of a message box is a static control, too, without a text.
BOOL CALLBACK TakeStaticText(HWND control, LPARAM result) {
    wchar_t name[16] = L"";
    ::GetClassNameW(control, name, std::size(name));
    wxString text = TextOf(control);
    if (wxString(name) != "Static" || text.empty()) return TRUE;
    *reinterpret_cast<wxString*>(result) = text;
    return FALSE;
}

}  // namespace

wxString Text(const wxWindow* window) {
    return TextOf(window->GetHandle());
}

wxString Text(const wxMessageDialogBase*) {
    wxString text;
    ::EnumChildWindows(SystemsDialog(), TakeStaticText, reinterpret_cast<LPARAM>(&text));
    return text;
}

bool HasKeyboard(const wxTopLevelWindow* window) {
    HWND own = window->GetHandle();
    return own ? ::GetForegroundWindow() == own : SystemsDialog() != nullptr;
}

bool IsFilled(const wxFileDialog*) {
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

void Dismiss(const wxDialog*) {
    ::PostMessageW(SystemsDialog(), WM_COMMAND, IDCANCEL, 0);
}

}  // namespace quirkmeter::native
