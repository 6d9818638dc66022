#include <windows.h>
#include <wx/uiaction.h>

#include "native.h"

namespace quirkmeter::native {

namespace {

wxString TextOf(HWND window) {
    wchar_t text[1024] = L"";
    ::GetWindowTextW(window, text, std::size(text));
    return text;
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
    ::EnumChildWindows(::GetForegroundWindow(), TakeStaticText, reinterpret_cast<LPARAM>(&text));
    return text;
}

wxString KeyboardTitle() {
    return TextOf(::GetForegroundWindow());
}

void TypeFileName(const std::string& name) {
    wxUIActionSimulator keyboard;
    keyboard.Char(WXK_HOME);
    keyboard.Char(WXK_END, wxMOD_SHIFT);
    keyboard.Text(name.c_str());
}

}  // namespace quirkmeter::native
