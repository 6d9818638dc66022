// The common look of the program's windows: units, colours, fonts, row icons.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/colour.h>
#include <wx/font.h>
#include <wx/iconbndl.h>
#include <wx/string.h>
#include <wx/vector.h>
#include <wx/window.h>

#include <string>

#include "model/main_window.h"
#include "platform/platform.h"

namespace quirkmeter::look {

inline const wxColour Grey(128, 128, 128);
inline const wxColour DarkGrey(64, 64, 64);
inline const wxColour DarkGreen(0, 64, 0);
inline const wxColour BrightGreen(0, 255, 0);
inline const wxColour Red(255, 0, 0);
inline const wxColour White(255, 255, 255);
inline const wxColour Yellow(255, 255, 0);

/// Layouts are given in twips: 1/1440 inch, 15 to a pixel at 96 dots per inch. They grow with the
/// texts that the user wants.
wxSize Twips(const wxWindow* window, int width, int height);
wxRect Twips(const wxWindow* window, int left, int top, int width, int height);

wxFont Text();  // the size of nearly everything
wxFont Bold();
wxFont Large();  // bold, for what must be seen first
wxFont Black();  // the two signs beside the pick lists

/// The colour where it can be read on the dialogs' dark grey, else white.
wxColour ReadableOnDarkGrey(const wxColour& colour);

/// Tells screen readers what a control is called and, where wxWidgets draws it, what it shows.
void Describe(wxWindow* control, platform::ControlKind kind, const wxString& name,
              const wxString& shown = {});

/// Keeps a layout of fixed places in scale when its window comes to a display of another scale.
void FollowDisplayScale(wxWindow* window);

/// Gives a control the bright green on dark green of the program's lists.
void PaintGreen(wxWindow* control);

/// A disc of that colour, 11 pixels across in a 16 x 16 image on dark green, sharp at any scale.
wxBitmapBundle Disc(const wxColour& colour);

/// The program's icon in title bar and task bar: a red disc.
wxIconBundle ProgramIcons();

/// Enlarges a control to the size of its text, if it is smaller.
void MakeRoomForText(wxWindow* control);

/// Shows a message box with an OK button and the program's title in front of `parent`, and returns
/// the focus to it.
void ShowMessage(wxWindow* parent, const wxString& text, MessageIcon icon);

/// Texts of the rooms below, paths above all, are bytes in the system's encoding of file names.
wxString Shown(const std::string& text);
std::string Stored(const wxString& text);

}  // namespace quirkmeter::look
