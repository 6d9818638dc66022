#include "ui/pick_list.h"

#include <wx/button.h>
#include <wx/dc.h>
#include <wx/time.h>
#include <wx/toplevel.h>

#include <utility>

#include "ui/look.h"

namespace quirkmeter {

namespace {

// A longer pause starts a new search text.
constexpr long TypingPause = 1000;

bool IsAccessKey(const wxEvent& event) {
    auto* key = dynamic_cast<const wxKeyEvent*>(&event);
    return key && key->GetModifiers() == wxMOD_ALT && key->GetKeyCode() > WXK_SPACE &&
           key->GetKeyCode() < WXK_DELETE;
}

}  // namespace

PickList::PickList(wxWindow* parent, const wxString& name, const wxArrayString& entries,
                   const wxPoint& position, const wxSize& size)
    : wxOwnerDrawnComboBox(parent, wxID_ANY, wxEmptyString, position, size, entries, wxCB_READONLY),
      name_(name) {
    SetFont(look::Bold());
    look::PaintGreen(this);
    Bind(wxEVT_CHAR_HOOK, &PickList::OnCharHook, this);
    Bind(wxEVT_CHAR, &PickList::OnChar, this);
}

void PickList::Pick(const wxString& entry) {
    wxOwnerDrawnComboBox::SetSelection(FindString(entry));
    wxCommandEvent event(wxEVT_COMBOBOX, GetId());
    event.SetEventObject(this);
    event.SetInt(GetSelection());
    event.SetString(entry);
    ProcessWindowEvent(event);
}

void PickList::SetSelection(int entry) {
    wxOwnerDrawnComboBox::SetSelection(entry);
    selected_ = entry;
    Describe();
}

// After the list was open, wxWidgets would focus the popup window, and neither Tab nor a click would
// return the focus.
void PickList::SetCanFocus(bool) {
    wxOwnerDrawnComboBox::SetCanFocus(true);
}

// wxWidgets would treat a typed letter as an access key, and report a change when the same entry is
// picked again.
bool PickList::ProcessEvent(wxEvent& event) {
    if (IsAccessKey(event)) return false;
    if (event.GetEventType() == wxEVT_COMBOBOX) {
        if (std::exchange(selected_, GetSelection()) == GetSelection()) return true;
        Describe();
    }
    return wxOwnerDrawnComboBox::ProcessEvent(event);
}

// Escape closes the open list first, then the dialog.
void PickList::OnCharHook(wxKeyEvent& event) {
    if (event.GetKeyCode() == WXK_ESCAPE && IsPopupShown())
        Dismiss();
    else
        event.Skip();
}

void PickList::OnChar(wxKeyEvent& event) {
    int key = event.GetKeyCode();
    if ((key == WXK_RETURN || key == WXK_NUMPAD_ENTER) && !IsPopupShown()) {
        PressDefaultButton();
        return;
    }
    wxChar character = event.GetUnicodeKey();
    if (character <= WXK_SPACE || character == WXK_DELETE || event.HasModifiers()) {
        event.Skip();
        return;
    }
    wxMilliClock_t now = wxGetLocalTimeMillis();
    if (now - lastTyped_ > TypingPause) typed_.clear();
    lastTyped_ = now;
    typed_ += character;
    if (FindTyped().empty()) typed_ = character;  // a new entry after all
    if (!FindTyped().empty()) Pick(FindTyped());
}

// wxWidgets' own handling of Enter does not reach a control that wants all keys.
void PickList::PressDefaultButton() {
    auto* dialog = static_cast<wxTopLevelWindow*>(wxGetTopLevelParent(this));
    auto* button = wxDynamicCast(dialog->GetDefaultItem(), wxButton);
    if (!button) return;
    wxCommandEvent press(wxEVT_BUTTON, button->GetId());
    press.SetEventObject(button);
    button->Command(press);
}

void PickList::Describe() {
    look::Describe(this, platform::ControlKind::PickList, name_, GetValue());
}

// The layout sets the width. wxWidgets would measure the text of every entry.
wxSize PickList::DoGetBestSize() const {
    return GetSizeFromTextSize(0);
}

void PickList::OnDrawBackground(wxDC& dc, const wxRect& rect, int item, int flags) const {
    // wxWidgets paints only the highlighted entry of the open list.
    bool highlighted = (flags & wxODCB_PAINTING_SELECTED) && !(flags & wxODCB_PAINTING_CONTROL);
    if (!highlighted) {
        dc.SetPen(*wxTRANSPARENT_PEN);
        dc.SetBrush(look::DarkGreen);
        dc.DrawRectangle(rect);
    }
    wxOwnerDrawnComboBox::OnDrawBackground(dc, rect, item, flags);
}

void PickList::OnDrawItem(wxDC& dc, const wxRect& rect, int item, int flags) const {
    if (!(flags & wxODCB_PAINTING_SELECTED)) dc.SetTextForeground(look::BrightGreen);
    wxOwnerDrawnComboBox::OnDrawItem(dc, rect, item, flags);
}

// The entry of exactly that text; else the first that begins with it.
wxString PickList::FindTyped() const {
    wxString begun;
    for (const wxString& entry : GetStrings()) {
        if (entry.IsSameAs(typed_, false)) return entry;
        if (begun.empty() && entry.Lower().StartsWith(typed_.Lower())) begun = entry;
    }
    return begun;
}

}  // namespace quirkmeter
