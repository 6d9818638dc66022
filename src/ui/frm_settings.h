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

    wxCheckBox* chkDisplayStatus;
    wxCheckBox* chkDisplayFailures;
    wxCheckBox* chkPlayFailureSound;
    wxCheckBox* chkHardcoreMode;
    PickList* cboStatus;
    wxCheckBox* chkStatusCTRL;
    wxCheckBox* chkStatusSHIFT;
    PickList* cboClear;
    wxCheckBox* chkClearCTRL;
    wxCheckBox* chkClearSHIFT;
    PickList* cboActive;
    wxCheckBox* ChkActiveCTRL;
    wxCheckBox* chkActiveSHIFT;
    wxButton* cmdOK;
    wxButton* cmdCancel;

   private:
    void CreateControls();
    wxCheckBox* AddSwitch(wxSizer* column, const char* caption);
    void AddHotkey(wxSizer* column, const char* title, PickList*& list, wxCheckBox*& ctrl,
                   wxCheckBox*& shift);
    void OnOK();
    void ChangeHardcoreMode();
};

}  // namespace quirkmeter
