#include "practice/displays.h"

#include <wx/dcbuffer.h>

#include <algorithm>
#include <utility>

#include "platform/platform.h"

namespace quirkmeter::practice {

namespace {

constexpr std::size_t LampsPerLine = 8;
constexpr int LampHeight = 22;  // this and what follows in pixels at 96 dpi
constexpr int LampGap = 3;
constexpr int RowGap = 5;
constexpr int LampPadding = 6;
constexpr int Margin = 8;

constexpr int ScreenLines = 2;

const wxColour PanelColour(0x20, 0x22, 0x24);
const wxColour TitleColour(0xD8, 0xDC, 0xE0);
const wxColour ScreenColour(0x00, 0x00, 0x00);
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

void DrawLamp(wxDC& dc, const Lamp& lamp, const wxRect& place) {
    LampColours colours = ColoursOf(lamp.State);
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(colours.Lamp);
    dc.DrawRoundedRectangle(place, 3);
    dc.SetTextForeground(colours.Text);
    dc.DrawLabel(lamp.Text, place, wxALIGN_CENTRE);
}

// Breaks a text into lines at its blanks, and within a word that is wider than a line.
wxArrayString Wrapped(const wxDC& dc, const wxString& text, int width) {
    wxArrayString lines;
    wxString line;
    for (wxUniChar character : text) {
        if (!line.empty() && dc.GetTextExtent(line + character).x > width) {
            std::size_t blank = line.rfind(' ');
            bool breakAtBlank = blank != wxString::npos && character != ' ';
            lines.push_back(breakAtBlank ? line.substr(0, blank) : line);
            line = breakAtBlank ? line.substr(blank + 1) : wxString();
            if (character == ' ') continue;
        }
        line += character;
    }
    if (!line.empty()) lines.push_back(line);
    return lines;
}

}  // namespace

Display::Display(wxWindow* parent) : wxWindow(parent, wxID_ANY) {
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    Bind(wxEVT_PAINT, [this](wxPaintEvent&) {
        wxAutoBufferedPaintDC dc(this);
        dc.SetFont(GetFont());
        Draw(dc);
    });
}

void Display::Describe(const char* name, const wxString& shown) {
    platform::Describe(reinterpret_cast<platform::WindowHandle>(GetHandle()),
                       platform::ControlKind::Display, wxString(name).ToStdWstring(),
                       shown.ToStdWstring());
}

AnnunciatorPanel::AnnunciatorPanel(wxWindow* parent, std::vector<LampRow> rows)
    : Display(parent), rows_(std::move(rows)) {
    SetFont(GetFont().Smaller());
    Measure();
    SetMinSize(size_);
    DescribeLamps();
}

void AnnunciatorPanel::Measure() {
    int titleWidth = 0;
    int lampWidth = GetTextExtent("External 2 100 %").x;
    for (const LampRow& row : rows_) {
        titleWidth = std::max(titleWidth, GetTextExtent(row.Title).x);
        for (const Lamp& lamp : row.Lamps)
            lampWidth = std::max(lampWidth, GetTextExtent(lamp.Text).x);
    }
    int margin = FromDIP(Margin);
    int gap = FromDIP(LampGap);
    int left = margin + titleWidth + margin;
    wxSize lampSize(lampWidth + 2 * FromDIP(LampPadding),
                    std::max(FromDIP(LampHeight), GetCharHeight() + gap));
    int y = margin;
    for (const LampRow& row : rows_) {
        std::vector<wxRect> places;
        for (std::size_t i = 0; i < row.Lamps.size(); ++i) {
            auto column = static_cast<int>(i % LampsPerLine);
            if (i > 0 && column == 0) y += lampSize.y + gap;
            places.emplace_back(wxPoint(left + column * (lampSize.x + gap), y), lampSize);
        }
        places_.push_back(std::move(places));
        y += lampSize.y + gap + FromDIP(RowGap);
    }
    size_ = wxSize(left + static_cast<int>(LampsPerLine) * (lampSize.x + gap) - gap + margin,
                   y - gap - FromDIP(RowGap) + margin);
}

wxSize AnnunciatorPanel::DoGetBestClientSize() const {
    return size_;
}

void AnnunciatorPanel::DescribeLamps() {
    wxString lit;
    for (const LampRow& row : rows_)
        for (const Lamp& lamp : row.Lamps)
            if (lamp.State != Light::Dark)
                lit += (lit.empty() ? "" : ", ") + wxString(row.Title) + " " + lamp.Text;
    Describe("Annunciators", lit.empty() ? "none lit" : lit);
}

void AnnunciatorPanel::SetLamps(const std::vector<LampRow>& rows) {
    bool changed = false;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        for (std::size_t i = 0; i < rows_[row].Lamps.size(); ++i) {
            if (rows[row].Lamps[i] == rows_[row].Lamps[i]) continue;
            rows_[row].Lamps[i] = rows[row].Lamps[i];
            RefreshRect(places_[row][i], false);
            changed = true;
        }
    }
    if (changed) DescribeLamps();
}

void AnnunciatorPanel::Draw(wxDC& dc) {
    dc.SetBackground(PanelColour);
    dc.Clear();
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        wxRect first = places_[row].front();
        dc.SetTextForeground(TitleColour);
        dc.DrawLabel(rows_[row].Title, wxRect(FromDIP(Margin), first.y, first.x, first.height),
                     wxALIGN_CENTRE_VERTICAL);
        for (std::size_t i = 0; i < rows_[row].Lamps.size(); ++i)
            DrawLamp(dc, rows_[row].Lamps[i], places_[row][i]);
    }
}

ScreenPanel::ScreenPanel(wxWindow* parent) : Display(parent) {
    SetFont(wxFontInfo(GetFont().GetPointSize() + 1).Family(wxFONTFAMILY_TELETYPE).Bold());
    SetMinSize(DoGetBestClientSize());
    Describe("The simulator's screen", {});
}

wxSize ScreenPanel::DoGetBestClientSize() const {
    return wxSize(FromDIP(300), ScreenLines * GetCharHeight() + 2 * FromDIP(Margin));
}

void ScreenPanel::SetText(const std::string& text) {
    wxString shown = wxString::From8BitData(text.data(), text.size());
    if (shown == text_) return;
    text_ = shown;
    Describe("The simulator's screen", text_);
    Refresh(false);
}

void ScreenPanel::Draw(wxDC& dc) {
    dc.SetBackground(ScreenColour);
    dc.Clear();
    dc.SetTextForeground(ScreenTextColour);
    int y = FromDIP(Margin);
    for (const wxString& line : Wrapped(dc, text_, GetClientSize().x - 2 * FromDIP(Margin))) {
        dc.DrawText(line, FromDIP(Margin), y);
        y += dc.GetCharHeight();
    }
}

}  // namespace quirkmeter::practice
