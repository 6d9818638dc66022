#include "ui/frm_reliability.h"

#include <wx/settings.h>
#include <wx/stattext.h>

#include <algorithm>
#include <cmath>

#include "model/number_text.h"
#include "ui/look.h"

namespace quirkmeter {

namespace {

constexpr int MaxPercent = 100;
constexpr int MaxThousandths = 999;
constexpr int MaxHours = 999;

wxString ThreeDigits(int number) {
    return wxString::Format("%03d", number);
}

wxArrayString PercentEntries() {
    wxArrayString entries;
    for (int i = MaxPercent; i >= 0; --i) entries.Add(wxString::Format("%d", i));
    return entries;
}

wxArrayString ThousandthEntries() {
    wxArrayString entries;
    for (int i = MaxThousandths; i >= 0; --i) entries.Add(ThreeDigits(i));
    return entries;
}

wxArrayString HourEntries() {
    wxArrayString entries;
    for (int tenths = 0; tenths <= 9; ++tenths) entries.Add(wxString::Format("0.%d", tenths));
    for (int i = 1; i <= MaxHours; ++i) entries.Add(wxString::Format("%d", i));
    return entries;
}

// The entries of the hours list by value: ten tenths, then whole hours. Hours between them, which
// only a profile edited by hand brings here, show as the nearest entry.
int HourEntryOf(float hours) {
    if (hours < 0.95f) return static_cast<int>(std::lround(hours * 10));
    return 9 + std::clamp(static_cast<int>(std::lround(hours)), 1, MaxHours);
}

float Read(const wxString& text) {
    return static_cast<float>(ReadPointNumber(look::Stored(text)).value_or(0));
}

}  // namespace

frmReliability::frmReliability(wxWindow* parent, const wxString& caption, bool single,
                               ReliabilityEdit& edit)
    : wxDialog(parent, wxID_ANY, caption), edit_(edit) {
    edit_.EditAccepted = false;
    CreateControls(single);
    Preselect();
    edit_.EditTest = false;
    edit_.EditClear = false;

    look::FollowDisplayScale(this);
    cboRelLeft->Bind(wxEVT_COMBOBOX, [this](wxCommandEvent&) { OnRelLeft(); });
    cboRelRight->Bind(wxEVT_COMBOBOX, [this](wxCommandEvent&) { OnRelRight(); });
    cmdAccept->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnAccept(); });
    auto closeWith = [this](wxButton* button, bool ReliabilityEdit::*flag) {
        button->Bind(wxEVT_BUTTON, [this, flag](wxCommandEvent&) {
            edit_.*flag = true;
            EndModal(wxID_OK);
        });
    };
    closeWith(cmdTest, &ReliabilityEdit::EditTest);
    closeWith(cmdClear, &ReliabilityEdit::EditClear);
}

void frmReliability::CreateControls(bool single) {
    SetBackgroundColour(look::DarkGrey);
    SetFont(look::Text());
    SetClientSize(look::Twips(this, 6000, 1830));

    auto list = [this](const char* name, const wxArrayString& entries, int left) {
        wxRect place = look::Twips(this, left, 240, 855, 345);
        return new PickList(this, name, entries, place.GetPosition(), place.GetSize());
    };
    auto label = [this](const char* text, int left, int top, int width, int height,
                        const wxFont& font) {
        wxRect place = look::Twips(this, left, top, width, height);
        auto* control = new wxStaticText(this, wxID_ANY, text, place.GetPosition(), place.GetSize(),
                                         wxST_NO_AUTORESIZE);
        control->SetForegroundColour(
            look::ReadableOnDarkGrey(wxSystemSettings::GetColour(wxSYS_COLOUR_HIGHLIGHTTEXT)));
        control->SetFont(font);
        look::MakeRoomForText(control);
    };
    auto button = [this](wxWindowID id, const char* caption, int left, int top) {
        wxRect place = look::Twips(this, left, top, 2535, 375);
        return new wxButton(this, id, caption, place.GetPosition(), place.GetSize(), wxBU_EXACTFIT);
    };

    static wxArrayString percents = PercentEntries(), thousandths = ThousandthEntries(),
                         hours = HourEntries();
    // A label made before a list would become its name.
    cboRelLeft = list("Reliability, whole percent", percents, 120);
    cboRelRight = list("Reliability, thousandths of a percent", thousandths, 1320);
    cboHours = list("Based on hours of flight", hours, 3720);
    label(".", 1080, 240, 135, 375, look::Black());
    label("%", 2280, 240, 375, 375, look::Black());
    label("based on", 2760, 360, 855, 255, look::Text());
    label("hours of flight", 4680, 360, 1695, 255, look::Text());
    cmdAccept = button(wxID_OK, "&Accept", 120, 840);
    cmdCancel = button(wxID_CANCEL, "&Cancel", 120, 1320);
    cmdTest = button(wxID_ANY, "&Test Failure", 3360, 840);
    cmdClear = button(wxID_ANY, "Clear &Failure", 3360, 1320);
    cmdTest->Show(single);
    cmdClear->Show(single);
    cmdAccept->SetDefault();
    SetEscapeId(wxID_CANCEL);
}

void frmReliability::Preselect() {
    // A fraction that rounds to a whole percent shows as that percent.
    auto thousandths = static_cast<int>(std::lround(edit_.EditReliability * 1000));
    cboRelLeft->SetStringSelection(wxString::Format("%d", thousandths / 1000));
    cboRelRight->SetStringSelection(ThreeDigits(thousandths % 1000));
    cboHours->SetSelection(HourEntryOf(edit_.EditHours));
}

void frmReliability::OnRelLeft() {
    wxString percent = cboRelLeft->GetValue();
    cboRelRight->SetStringSelection(percent == "0" || percent == "100" ? "000" : "999");
}

void frmReliability::OnRelRight() {
    if (cboRelLeft->GetValue() == "100") cboRelRight->SetStringSelection("000");
}

void frmReliability::OnAccept() {
    edit_.EditReliability = Read(cboRelLeft->GetValue() + "." + cboRelRight->GetValue());
    edit_.EditHours = Read(cboHours->GetValue());
    edit_.EditAccepted = true;
    EndModal(wxID_OK);
}

}  // namespace quirkmeter
