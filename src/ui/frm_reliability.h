// The reliability dialog: one reliability and the hours of flight it is based on, for one
// sub-system, a system or all.
#pragma once

#include <wx/button.h>
#include <wx/dialog.h>

#include "ui/pick_list.h"

namespace quirkmeter {

/// The values that go into the dialog and come back. The caller sets the first two before it creates
/// the dialog; at most one of the flags is set when it has closed.
struct ReliabilityEdit {
    float EditReliability;      // percent, 0 to 100, in thousandths
    float EditHours;            // 0 to 999
    bool EditAccepted = false;  // the two numbers are the user's choice
    bool EditTest = false;
    bool EditClear = false;
};

class frmReliability final : public wxDialog {
   public:
    /// `single`: for one sub-system, with the buttons that test and clear a failure.
    frmReliability(wxWindow* parent, const wxString& caption, bool single, ReliabilityEdit& edit);

    PickList* cboRelLeft;
    PickList* cboRelRight;
    PickList* cboHours;
    wxButton* cmdAccept;
    wxButton* cmdCancel;
    wxButton* cmdTest;
    wxButton* cmdClear;

   private:
    void CreateControls(bool single);
    void Preselect();
    void OnRelLeft();
    void OnRelRight();
    void OnAccept();

    ReliabilityEdit& edit_;
};

}  // namespace quirkmeter
