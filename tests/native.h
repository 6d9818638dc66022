// Asks the system itself about the windows on its display, without wxWidgets. One header, a file for
// each system.
#pragma once

#include <wx/filedlg.h>
#include <wx/msgdlg.h>
#include <wx/uiaction.h>
#include <wx/window.h>

#include <string>

namespace quirkmeter::native {

/// The text of a control, or the title of a window, with a "&" before its access key.
wxString Text(const wxWindow* window);

/// The text of a message box that is open.
wxString Text(const wxMessageDialogBase* box);

/// True when a message box that is open shows the icon of a warning.
bool ShowsWarning(const wxMessageDialogBase* box);

/// True when keys go to that window. It must be shown.
bool HasKeyboard(const wxTopLevelWindow* window);

/// True when the system's file dialog has that name chosen.
bool ShowsFile(const wxFileDialog* dialog, const std::string& name);

/// Asks for the dark theme, or no longer, where the theme is the program's to choose.
void PreferDarkTheme(bool dark);

/// The colour of that place of the display.
wxColour ColourAt(wxPoint place);

/// Types the name of a file of the folder that the system's file dialog shows.
void TypeFileName(wxUIActionSimulator& keyboard, const std::string& name);

/// Accepts what the system's file dialog shows.
void Accept(wxUIActionSimulator& keyboard, const wxFileDialog* dialog);

/// Closes a dialog or box of the system's own without an answer.
void Dismiss(const wxDialog* dialog);

}  // namespace quirkmeter::native
