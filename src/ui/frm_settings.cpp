#include "ui/frm_settings.h"

#include <wx/sizer.h>
#include <wx/stattext.h>

#include "model/engine_state.h"
#include "ui/look.h"

namespace quirkmeter {

namespace {

constexpr char NoKey[] = "None";

wxArrayString KeyEntries() {
    wxArrayString entries;
    entries.Add(NoKey);
    for (char key = '0'; key <= '9'; ++key) entries.Add(wxString(key));
    for (char key = 'A'; key <= 'Z'; ++key) entries.Add(wxString(key));
    return entries;
}

// A code from an edited file that no entry stands for leaves the list without a selection.
int KeyEntry(std::int32_t key) {
    if (key == 0) return 0;
    if (key >= '0' && key <= '9') return 1 + key - '0';
    if (key >= 'A' && key <= 'Z') return 11 + key - 'A';
    return wxNOT_FOUND;
}

void ShowHotkey(std::int32_t key, std::int32_t mods, PickList* list, wxCheckBox* ctrl,
                wxCheckBox* shift) {
    list->SetSelection(KeyEntry(key));
    ctrl->SetValue(WithCtrl(mods));
    shift->SetValue(WithShift(mods));
}

void StoreHotkey(const PickList* list, const wxCheckBox* ctrl, const wxCheckBox* shift,
                 std::int32_t& key, std::int32_t& mods) {
    wxString text = list->GetValue();
    if (text.empty() || text == NoKey) return;
    key = static_cast<std::int32_t>(text[0].GetValue());
    mods = (ctrl->GetValue() ? ModifierCtrl : 0) + (shift->GetValue() ? ModifierShift : 0);
}

}  // namespace

frmSettings::frmSettings() : wxDialog(nullptr, wxID_ANY, "Settings") {
    CreateControls();
    chkDisplayStatus->SetValue(Settings.DisplayUpdate);
    chkDisplayFailures->SetValue(Settings.DisplayFailures);
    chkPlayFailureSound->SetValue(Settings.PlayFailureSound);
    chkHardcoreMode->SetValue(Settings.HardcoreMode);
    ShowHotkey(Settings.StatusHotkey, Settings.StatusHotkeyMods, cboStatus, chkStatusCTRL,
               chkStatusSHIFT);
    ShowHotkey(Settings.ClearHotkey, Settings.ClearHotkeyMods, cboClear, chkClearCTRL,
               chkClearSHIFT);
    ShowHotkey(Settings.ActiveHotkey, Settings.ActiveHotkeyMods, cboActive, ChkActiveCTRL,
               chkActiveSHIFT);
    cmdOK->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnOK(); });
}

void frmSettings::CreateControls() {
    SetBackgroundColour(look::DarkGrey);
    SetFont(look::Text());
    auto* column = new wxBoxSizer(wxVERTICAL);
    chkDisplayStatus = AddSwitch(column, "&Display status changes in flight");
    chkDisplayFailures = AddSwitch(column, "Display &failure info in status");
    chkPlayFailureSound = AddSwitch(column, "&Play a sound when a failure occurs");
    chkHardcoreMode = AddSwitch(column, "&Hardcore Mode (see Options/Help)");
    AddHotkey(column, "In Flight Status Hotkey", cboStatus, chkStatusCTRL, chkStatusSHIFT);
    AddHotkey(column, "Clear Last Failure Hotkey", cboClear, chkClearCTRL, chkClearSHIFT);
    AddHotkey(column, "Activate/Deactivate QM Hotkey", cboActive, ChkActiveCTRL, chkActiveSHIFT);

    cmdOK = new wxButton(this, wxID_OK, "&OK");
    cmdCancel = new wxButton(this, wxID_CANCEL, "&Cancel");
    cmdOK->SetDefault();
    SetEscapeId(wxID_CANCEL);
    auto* buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(cmdOK, wxSizerFlags(1).Border(wxRIGHT, FromDIP(8)));
    buttons->Add(cmdCancel, wxSizerFlags(1));
    column->Add(buttons, wxSizerFlags().Expand().Border(wxTOP, FromDIP(16)));

    auto* margin = new wxBoxSizer(wxVERTICAL);
    margin->Add(column, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(12)));
    SetSizerAndFit(margin);
}

wxCheckBox* frmSettings::AddSwitch(wxSizer* column, const char* caption) {
    auto* box = new wxCheckBox(this, wxID_ANY, caption);
    box->SetForegroundColour(look::White);
    column->Add(box, wxSizerFlags().Border(wxBOTTOM, FromDIP(4)));
    return box;
}

void frmSettings::AddHotkey(wxSizer* column, const char* title, PickList*& list, wxCheckBox*& ctrl,
                            wxCheckBox*& shift) {
    auto* label = new wxStaticText(this, wxID_ANY, title);
    label->SetForegroundColour(look::Yellow);
    column->Add(label, wxSizerFlags().Border(wxTOP, FromDIP(8)));

    list = new PickList(this, title, KeyEntries(), wxDefaultPosition,
                        wxSize(look::Twips(this, 1350, 0).GetWidth(), -1));
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    auto middle = wxSizerFlags().CenterVertical().Border(wxRIGHT, FromDIP(12));
    row->Add(list, middle);
    auto modifier = [this, title, row, middle](const char* caption) {
        auto* box = new wxCheckBox(this, wxID_ANY, caption);
        look::Describe(box, platform::ControlKind::Native, wxString(title) + ", " + caption);
        box->SetForegroundColour(look::White);
        row->Add(box, middle);
        return box;
    };
    ctrl = modifier("CTRL");
    shift = modifier("SHIFT");
    column->Add(row, wxSizerFlags().Border(wxTOP, FromDIP(4)));
}

void frmSettings::OnOK() {
    Settings.StatusHotkey = Settings.StatusHotkeyMods = 0;
    Settings.ClearHotkey = Settings.ClearHotkeyMods = 0;
    Settings.ActiveHotkey = Settings.ActiveHotkeyMods = 0;
    StoreHotkey(cboStatus, chkStatusCTRL, chkStatusSHIFT, Settings.StatusHotkey,
                Settings.StatusHotkeyMods);
    StoreHotkey(cboClear, chkClearCTRL, chkClearSHIFT, Settings.ClearHotkey,
                Settings.ClearHotkeyMods);
    StoreHotkey(cboActive, ChkActiveCTRL, chkActiveSHIFT, Settings.ActiveHotkey,
                Settings.ActiveHotkeyMods);
    Settings.DisplayFailures = chkDisplayFailures->GetValue();
    Settings.DisplayUpdate = chkDisplayStatus->GetValue();
    Settings.PlayFailureSound = chkPlayFailureSound->GetValue();
    ChangeHardcoreMode();
    EndModal(wxID_OK);
}

void frmSettings::ChangeHardcoreMode() {
    auto tell = [this](const char* text) { look::ShowMessage(this, text, MessageIcon::None); };
    if (chkHardcoreMode->GetValue() && !Settings.HardcoreMode) {
        if (EngineState.Airborne) {
            chkHardcoreMode->SetValue(false);
            tell("Hardcore Mode cannot be enabled while airborne.");
        } else {
            tell("You must restart Quirkmeter for Hardcore Mode to be enabled.");
            Settings.HardcoreMode = true;
        }
    }
    if (!chkHardcoreMode->GetValue() && Settings.HardcoreMode) {
        if (EngineState.Airborne) {
            chkHardcoreMode->SetValue(true);
            tell("Hardcore Mode cannot be disabled while airborne.");
        } else {
            tell("You must restart Quirkmeter for Hardcore Mode to be disabled.");
            Settings.HardcoreMode = false;
        }
    }
}

}  // namespace quirkmeter
