#include "ui/pick_list.h"

#include <wx/time.h>

#include "ui/look.h"

namespace quirkmeter {

namespace {

// A longer pause begins a new entry.
constexpr long TypingPause = 1000;

}  // namespace

PickList::PickList(wxWindow* parent, const wxArrayString& entries, const wxPoint& position,
                   const wxSize& size)
    : wxOwnerDrawnComboBox(parent, wxID_ANY, wxEmptyString, position, size, entries,
                           wxCB_READONLY) {
    SetFont(look::Bold());
    look::PaintGreen(this);
    Bind(wxEVT_CHAR, &PickList::OnChar, this);
}

void PickList::Pick(const wxString& entry) {
    if (!SetStringSelection(entry)) return;
    wxCommandEvent event(wxEVT_COMBOBOX, GetId());
    event.SetEventObject(this);
    event.SetInt(GetSelection());
    event.SetString(entry);
    ProcessWindowEvent(event);
}

void PickList::OnChar(wxKeyEvent& event) {
    wxChar character = event.GetUnicodeKey();
    if (character <= WXK_SPACE || character == WXK_DELETE || event.HasModifiers()) {
        event.Skip();
        return;
    }
    wxMilliClock_t now = wxGetLocalTimeMillis();
    if (now - lastTyped_ > TypingPause) typed_.clear();
    lastTyped_ = now;
    typed_ += character;
    int entry = FindTyped();
    if (entry != wxNOT_FOUND && entry != GetSelection())
        Pick(GetString(static_cast<unsigned>(entry)));
}

// The entry of exactly that text; else the first that begins with it.
int PickList::FindTyped() const {
    int exact = FindString(typed_);
    if (exact != wxNOT_FOUND) return exact;
    for (unsigned i = 0; i < GetCount(); ++i)
        if (GetString(i).Lower().StartsWith(typed_.Lower())) return static_cast<int>(i);
    return wxNOT_FOUND;
}

}  // namespace quirkmeter
