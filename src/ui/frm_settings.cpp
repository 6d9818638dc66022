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

void ShowHotkey(const Hotkey& hotkey, const frmSettings::HotkeyControls& row) {
    row.cboKey->SetSelection(KeyEntry(hotkey.Key));
    row.chkCTRL->SetValue(hotkey.WithCtrl());
    row.chkSHIFT->SetValue(hotkey.WithShift());
}

Hotkey ChosenHotkey(const frmSettings::HotkeyControls& row) {
    wxString text = row.cboKey->GetValue();
    if (text.empty() || text == NoKey) return {};
    return {.Key = static_cast<std::int32_t>(text[0].GetValue()),
            .Mods = (row.chkCTRL->GetValue() ? ModifierCtrl : 0) +
                    (row.chkSHIFT->GetValue() ? ModifierShift : 0)};
}

struct SwitchField {
    const char* Caption;
    wxCheckBox* frmSettings::*Box;
    bool SettingsRecord::*Field;
};
constexpr SwitchField Switches[] = {
    {"&Display status changes in flight", &frmSettings::chkDisplayStatus,
     &SettingsRecord::DisplayUpdate},
    {"Display &failure info in status", &frmSettings::chkDisplayFailures,
     &SettingsRecord::DisplayFailures},
    {"&Play a sound when a failure occurs", &frmSettings::chkPlayFailureSound,
     &SettingsRecord::PlayFailureSound},
};

struct HotkeyField {
    const char* Title;
    frmSettings::HotkeyControls frmSettings::*Row;
    Hotkey SettingsRecord::*Field;
};
constexpr HotkeyField Hotkeys[] = {
    {"In Flight Status Hotkey", &frmSettings::Status, &SettingsRecord::StatusHotkey},
    {"Clear Last Failure Hotkey", &frmSettings::Clear, &SettingsRecord::ClearHotkey},
    {"Activate/Deactivate QM Hotkey", &frmSettings::Active, &SettingsRecord::ActiveHotkey},
};

}  // namespace

frmSettings::frmSettings() : wxDialog(nullptr, wxID_ANY, "Settings") {
    CreateControls();
    cmdOK->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnOK(); });
}

void frmSettings::CreateControls() {
    SetBackgroundColour(look::DarkGrey);
    SetFont(look::Text());
    auto* column = new wxBoxSizer(wxVERTICAL);
    for (auto [caption, box, field] : Switches) {
        this->*box = AddSwitch(column, caption);
        (this->*box)->SetValue(Settings.*field);
    }
    chkHardcoreMode = AddSwitch(column, "&Hardcore Mode (see Options/Help)");
    chkHardcoreMode->SetValue(Settings.HardcoreMode);
    for (auto [title, row, field] : Hotkeys) {
        this->*row = AddHotkey(column, title);
        ShowHotkey(Settings.*field, this->*row);
    }

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

wxCheckBox* frmSettings::AddCheckBox(const char* caption) {
    auto* box = new wxCheckBox(this, wxID_ANY, caption);
    box->SetForegroundColour(look::White);
    platform::EdgeOnDarkGround(reinterpret_cast<platform::WindowHandle>(box->GetHandle()));
    return box;
}

wxCheckBox* frmSettings::AddSwitch(wxSizer* column, const char* caption) {
    wxCheckBox* box = AddCheckBox(caption);
    column->Add(box, wxSizerFlags().Border(wxBOTTOM, FromDIP(4)));
    return box;
}

frmSettings::HotkeyControls frmSettings::AddHotkey(wxSizer* column, const char* title) {
    auto* label = new wxStaticText(this, wxID_ANY, title);
    label->SetForegroundColour(look::Yellow);
    column->Add(label, wxSizerFlags().Border(wxTOP, FromDIP(8)));

    auto* list = new PickList(this, title, KeyEntries(), wxDefaultPosition,
                              wxSize(look::Twips(this, 1350, 0).GetWidth(), -1));
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    auto middle = wxSizerFlags().CenterVertical().Border(wxRIGHT, FromDIP(12));
    row->Add(list, middle);
    auto modifier = [this, title, row, middle](const char* caption) {
        wxCheckBox* box = AddCheckBox(caption);
        look::Describe(box, platform::ControlKind::Native, wxString(title) + ", " + caption);
        row->Add(box, middle);
        return box;
    };
    wxCheckBox* ctrl = modifier("CTRL");
    wxCheckBox* shift = modifier("SHIFT");
    column->Add(row, wxSizerFlags().Border(wxTOP, FromDIP(4)));
    return {list, ctrl, shift};
}

void frmSettings::OnOK() {
    for (auto [title, row, field] : Hotkeys) Settings.*field = ChosenHotkey(this->*row);
    for (auto [caption, box, field] : Switches) Settings.*field = (this->*box)->GetValue();
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
