#include "ui/look.h"

#include <wx/bitmap.h>
#include <wx/dcmemory.h>
#include <wx/image.h>
#include <wx/msgdlg.h>
#include <wx/strconv.h>

namespace quirkmeter::look {

namespace {

constexpr char Face[] = "Arial";
constexpr int TwipsPerPixel = 15;
constexpr int DiscSizes[] = {16, 20, 24, 32, 48};

wxPoint FromTwips(const wxWindow* window, int x, int y) {
    double scale = platform::TextScale() / TwipsPerPixel;
    return window->FromDIP(wxPoint(static_cast<int>(x * scale), static_cast<int>(y * scale)));
}

// Draws the disc larger and scales it down: the edge is then equally smooth on each platform.
wxBitmap DiscBitmap(const wxColour& colour, int size) {
    constexpr int Oversampling = 8;
    int largeSize = size * Oversampling;
    wxBitmap large(largeSize, largeSize, 24);
    wxMemoryDC dc(large);
    dc.SetBackground(DarkGreen);
    dc.Clear();
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(colour);
    dc.DrawCircle(largeSize / 2, largeSize / 2, largeSize * 11 / 32);
    dc.SelectObject(wxNullBitmap);
    return wxBitmap(large.ConvertToImage().Rescale(size, size, wxIMAGE_QUALITY_BOX_AVERAGE));
}

void ScalePlaces(wxWindow* window, const wxDPIChangedEvent& event) {
    for (wxWindow* child : window->GetChildren()) {
        if (child->IsTopLevel()) continue;
        wxRect place = child->GetRect();
        child->SetSize(event.ScaleX(place.x), event.ScaleY(place.y), event.ScaleX(place.width),
                       event.ScaleY(place.height));
        ScalePlaces(child, event);
    }
}

}  // namespace

wxSize Twips(const wxWindow* window, int width, int height) {
    wxPoint corner = FromTwips(window, width, height);
    return {corner.x, corner.y};
}

wxRect Twips(const wxWindow* window, int left, int top, int width, int height) {
    return {FromTwips(window, left, top), Twips(window, width, height)};
}

wxFont Text() {
    return wxFontInfo(9).FaceName(Face);
}

wxFont Bold() {
    return wxFontInfo(9).FaceName(Face).Bold();
}

wxFont Large() {
    return wxFontInfo(11).FaceName(Face).Bold();
}

wxFont Black() {
    return wxFontInfo(12).FaceName("Arial Black").Weight(wxFONTWEIGHT_HEAVY);
}

wxColour ReadableOnDarkGrey(const wxColour& colour) {
    return colour.GetLuminance() > 0.6 ? colour : White;
}

// The focus may be in a child of the control.
void Describe(wxWindow* control, platform::ControlKind kind, const wxString& name,
              const wxString& shown) {
    for (wxWindow* part : control->GetChildren())
        if (part->AcceptsFocus()) control = part;
    platform::Describe(reinterpret_cast<platform::WindowHandle>(control->GetHandle()), kind,
                       name.ToStdWstring(), shown.ToStdWstring());
}

void FollowDisplayScale(wxWindow* window) {
    window->Bind(wxEVT_DPI_CHANGED, [window](wxDPIChangedEvent& event) {
        event.Skip();
        ScalePlaces(window, event);
    });
}

void PaintGreen(wxWindow* control) {
    control->SetBackgroundColour(DarkGreen);
    control->SetForegroundColour(BrightGreen);
}

wxBitmapBundle Disc(const wxColour& colour) {
    wxVector<wxBitmap> sizes;
    for (int size : DiscSizes) sizes.push_back(DiscBitmap(colour, size));
    return wxBitmapBundle::FromBitmaps(sizes);
}

wxIconBundle ProgramIcons() {
    wxIconBundle icons;
    for (int size : DiscSizes) {
        wxIcon icon;
        icon.CopyFromBitmap(DiscBitmap(Red, size));
        icons.AddIcon(icon);
    }
    return icons;
}

void MakeRoomForText(wxWindow* control) {
    wxSize size = control->GetSize();
    size.IncTo(control->GetBestSize());
    control->SetSize(size);
}

void ShowMessage(wxWindow* parent, const wxString& text, MessageIcon icon) {
    long style = wxOK | (icon == MessageIcon::Warning ? wxICON_WARNING : wxICON_NONE);
    platform::ShowWarningIcons();
    wxMessageBox(text, ProgramTitle, style, parent);
}

// Try the system's encoding first: wxWidgets' converter for file names prefers UTF-8.
wxString Shown(const std::string& text) {
    wxString shown(text.data(), wxConvLibc, text.size());
    return shown.empty() ? wxString(text.data(), *wxConvFileName, text.size()) : shown;
}

std::string Stored(const wxString& text) {
    wxCharBuffer bytes = text.mb_str(*wxConvFileName);
    return {bytes.data(), bytes.length()};
}

}  // namespace quirkmeter::look
