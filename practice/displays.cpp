#include "practice/displays.h"

#include <utility>

#include "platform/platform.h"

namespace quirkmeter::practice {

namespace {

constexpr int LampsPerLine = 5;
constexpr int LampGap = 3;  // this and the margin in pixels at 96 dpi
constexpr int Margin = 8;

constexpr int ScreenLines = 2;

const wxColour PanelColour(0x20, 0x22, 0x24);
const wxColour TitleColour(0xD8, 0xDC, 0xE0);
const wxColour ScreenTextColour(0x40, 0xFF, 0x60);

struct LampColours {
    wxColour Lamp;
    wxColour Text;
};

LampColours ColoursOf(Light light) {
    switch (light) {
        case Light::Amber:
            return {wxColour(0xFF, 0xB4, 0x00), *wxBLACK};
        case Light::Red:
            return {wxColour(0xD0, 0x10, 0x20), *wxWHITE};
        case Light::Dark:
            break;
    }
    return {wxColour(0x32, 0x36, 0x3A), wxColour(0xA4, 0xAA, 0xB0)};
}

void ShowLamp(wxStaticText* label, const Lamp& lamp) {
    auto [colour, textColour] = ColoursOf(lamp.State);
    label->SetBackgroundColour(colour);
    label->SetForegroundColour(textColour);
    label->SetLabelText(lamp.Text);
    label->Refresh();
}

}  // namespace

AnnunciatorPanel::AnnunciatorPanel(wxWindow* parent, std::vector<LampRow> rows)
    : wxWindow(parent, wxID_ANY), rows_(std::move(rows)) {
    SetBackgroundColour(PanelColour);
    SetFont(GetFont().Smaller());
    int gap = FromDIP(LampGap);
    auto* grid = new wxFlexGridSizer(1 + LampsPerLine, wxSize(gap, 2 * gap));
    for (const LampRow& row : rows_) {
        auto* title = new wxStaticText(this, wxID_ANY, row.Title);
        title->SetForegroundColour(TitleColour);
        grid->Add(title, wxSizerFlags().CentreVertical().Border(wxRIGHT, gap));
        std::vector<wxStaticText*>& lamps = lamps_.emplace_back();
        for (const Lamp& lamp : row.Lamps) {
            if (!lamps.empty() && lamps.size() % LampsPerLine == 0) grid->AddSpacer(0);
            grid->Add(lamps.emplace_back(MakeLamp(lamp)), wxSizerFlags().Expand());
        }
        for (std::size_t i = row.Lamps.size(); i % LampsPerLine != 0; ++i) grid->AddSpacer(0);
    }
    auto* margin = new wxBoxSizer(wxVERTICAL);
    margin->Add(grid, wxSizerFlags().Border(wxALL, FromDIP(Margin)));
    SetSizer(margin);
    DescribeLamps();
}

wxStaticText* AnnunciatorPanel::MakeLamp(const Lamp& lamp) {
    // The lamps are as wide as the longest text.
    auto* label = new wxStaticText(this, wxID_ANY, "Tank External 2 (Leak)", wxDefaultPosition,
                                   wxDefaultSize, wxALIGN_CENTRE | wxST_NO_AUTORESIZE);
    label->SetMinSize(label->GetBestSize() + FromDIP(wxSize(8, 0)));
    ShowLamp(label, lamp);
    return label;
}

void AnnunciatorPanel::SetLamps(const std::vector<LampRow>& rows) {
    bool changed = false;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        for (std::size_t i = 0; i < rows_[row].Lamps.size(); ++i) {
            if (rows[row].Lamps[i] == rows_[row].Lamps[i]) continue;
            rows_[row].Lamps[i] = rows[row].Lamps[i];
            ShowLamp(lamps_[row][i], rows[row].Lamps[i]);
            changed = true;
        }
    }
    if (changed) DescribeLamps();
}

void AnnunciatorPanel::DescribeLamps() {
    wxString lit;
    for (const LampRow& row : rows_)
        for (const Lamp& lamp : row.Lamps)
            if (lamp.State != Light::Dark)
                lit += (lit.empty() ? "" : ", ") + wxString(row.Title) + " " + lamp.Text;
    platform::Describe(reinterpret_cast<platform::WindowHandle>(GetHandle()),
                       platform::ControlKind::Display, L"Annunciators",
                       (lit.empty() ? "none lit" : lit).ToStdWstring());
}

ScreenPanel::ScreenPanel(wxWindow* parent)
    : wxWindow(parent, wxID_ANY), label_(new wxStaticText(this, wxID_ANY, wxEmptyString)) {
    SetBackgroundColour(*wxBLACK);
    label_->SetFont(wxFontInfo(GetFont().GetPointSize() + 1).Family(wxFONTFAMILY_TELETYPE).Bold());
    label_->SetForegroundColour(ScreenTextColour);
    label_->SetPosition(FromDIP(wxPoint(Margin, Margin)));
    SetMinSize(wxSize(FromDIP(300), ScreenLines * label_->GetCharHeight() + 2 * FromDIP(Margin)));
}

void ScreenPanel::SetText(const std::string& text) {
    wxString shown = wxString::From8BitData(text.data(), text.size());
    if (shown == text_) return;
    text_ = shown;
    label_->SetLabelText(text_);
    label_->Wrap(GetClientSize().x - 2 * FromDIP(Margin));
}

}  // namespace quirkmeter::practice
