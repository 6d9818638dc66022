// Queries the system about the windows on its display, without wxWidgets. Each system has its own
// source file.
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

/// True when the window has the keyboard focus. It must be shown.
bool HasKeyboard(const wxTopLevelWindow* window);

/// True when that name is chosen in the system's file dialog.
bool ShowsFile(const wxFileDialog* dialog, const std::string& name);

/// Switches the dark theme on or off, where a program can choose it.
void PreferDarkTheme(bool dark);

/// The colour of a point of the display.
wxColour ColourAt(wxPoint place);

/// Types a file name into the system's file dialog, which shows the file's folder.
void TypeFileName(wxUIActionSimulator& keyboard, const std::string& name);

/// Accepts the choice in the system's file dialog.
void Accept(wxUIActionSimulator& keyboard, const wxFileDialog* dialog);

/// Closes a dialog or box of the system without an answer.
void Dismiss(const wxDialog* dialog);

}  // namespace quirkmeter::native
