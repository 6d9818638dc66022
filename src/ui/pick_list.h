// A read-only drop-down list in the program's colours. Typing selects an entry. A list of 1000
// entries opens without a delay.
#pragma once

#include <wx/odcombo.h>

namespace quirkmeter {

class PickList final : public wxOwnerDrawnComboBox {
   public:
    /// `name` is what a screen reader calls it.
    PickList(wxWindow* parent, const wxString& name, const wxArrayString& entries,
             const wxPoint& position, const wxSize& size);

    /// Picks the entry of that text as a user does: wxEVT_COMBOBOX follows unless it is selected
    /// already.
    void Pick(const wxString& entry);

    void SetSelection(int entry) override;
    void SetCanFocus(bool canFocus) override;
    bool ProcessEvent(wxEvent& event) override;

   private:
    wxSize DoGetBestSize() const override;
    void OnDrawBackground(wxDC& dc, const wxRect& rect, int item, int flags) const override;
    void OnDrawItem(wxDC& dc, const wxRect& rect, int item, int flags) const override;
    void OnCharHook(wxKeyEvent& event);
    void OnChar(wxKeyEvent& event);
    void PressDefaultButton();
    void Describe();
    wxString FindTyped() const;

    wxString name_;
    int selected_ = wxNOT_FOUND;  // as it was at the last change event
    wxString typed_;
    wxMilliClock_t lastTyped_ = 0;
};

}  // namespace quirkmeter
