// The settings dialog: edits Settings in memory. Nothing of a cancelled edit survives.
#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/odcombo.h>

#include "model/settings.h"

class wxSizer;

namespace quirkmeter {

class frmSettings final : public wxDialog {
   public:
    frmSettings();

    wxCheckBox* chkDisplayStatus;
    wxCheckBox* chkDisplayFailures;
    wxCheckBox* chkPlayFailureSound;
    wxCheckBox* chkHardcoreMode;
    wxOwnerDrawnComboBox* cboStatus;
    wxCheckBox* chkStatusCTRL;
    wxCheckBox* chkStatusSHIFT;
    wxOwnerDrawnComboBox* cboClear;
    wxCheckBox* chkClearCTRL;
    wxCheckBox* chkClearSHIFT;
    wxOwnerDrawnComboBox* cboActive;
    wxCheckBox* ChkActiveCTRL;
    wxCheckBox* chkActiveSHIFT;
    wxButton* cmdOK;
    wxButton* cmdCancel;

   private:
    void CreateControls();
    wxCheckBox* AddSwitch(wxSizer* column, const char* caption);
    void AddHotkey(wxSizer* column, const char* title, wxOwnerDrawnComboBox*& list,
                   wxCheckBox*& ctrl, wxCheckBox*& shift);
    void OnOK();
    void ChangeHardcoreMode();
};

}  // namespace quirkmeter
