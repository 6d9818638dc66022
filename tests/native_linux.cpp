// GTK's own headers are not needed for the program, so the toolkit is taken at its word.
#include <wx/uiaction.h>
#include <wx/utils.h>

#include "native.h"

namespace quirkmeter::native {

wxString Text(const wxWindow* window) {
    return window->GetLabel();
}

wxString Text(const wxMessageDialogBase* box) {
    return box->GetMessage();
}

wxString KeyboardTitle() {
    wxArrayString output;
    wxExecute("xdotool getwindowfocus getwindowname", output, wxEXEC_SYNC | wxEXEC_NOEVENTS);
    return output.empty() ? wxString() : output[0];
}

// A point lets the dialog for opening, too, take what is typed as a name.
void TypeFileName(const std::string& name) {
    wxUIActionSimulator().Text(("./" + name).c_str());
}

}  // namespace quirkmeter::native
