// What the system itself says of the windows on its display, past the toolkit. One header, a file
// for each system.
#pragma once

#include <wx/msgdlg.h>
#include <wx/window.h>

#include <string>

namespace quirkmeter::native {

/// The text of a control, or the title of a window, with a "&" before its access key.
wxString Text(const wxWindow* window);

/// The text of a message box that is open.
wxString Text(const wxMessageDialogBase* box);

/// The title of the window that has the keyboard.
wxString KeyboardTitle();

/// Types the name of a file of the folder that the system's file dialog shows.
void TypeFileName(const std::string& name);

}  // namespace quirkmeter::native
