// The settings dialog: edits Settings in memory. Nothing of a cancelled edit survives.
#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>

#include "model/settings.h"
#include "ui/pick_list.h"

class wxSizer;

namespace quirkmeter {

class frmSettings final : public wxDialog {
   public:
    frmSettings();

    /// A row of the dialog: the pick list of keys and the boxes of the modifiers.
    struct HotkeyControls {
        PickList* cboKey;
        wxCheckBox *chkCTRL, *chkSHIFT;
    };

    wxCheckBox* chkDisplayStatus;
    wxCheckBox* chkDisplayFailures;
    wxCheckBox* chkPlayFailureSound;
    wxCheckBox* chkHardcoreMode;
    HotkeyControls Status;
    HotkeyControls Clear;
    HotkeyControls Active;
    wxButton* cmdOK;
    wxButton* cmdCancel;

   private:
    void CreateControls();
    wxCheckBox* AddCheckBox(const char* caption);
    wxCheckBox* AddSwitch(wxSizer* column, const char* caption);
    HotkeyControls AddHotkey(wxSizer* column, const char* title);
    void OnOK();
    void ChangeHardcoreMode();
};

}  // namespace quirkmeter
