// The two drawn displays of the practice simulator's window. Neither takes part in the tab order.
#pragma once

#include <wx/wx.h>

#include <string>
#include <vector>

#include "practice/effects.h"

namespace quirkmeter::practice {

class Display : public wxWindow {
   public:
    explicit Display(wxWindow* parent);
    bool AcceptsFocus() const override { return false; }

   protected:
    virtual void Draw(wxDC& dc) = 0;
    /// For a screen reader.
    void Describe(const char* name, const wxString& shown);
};

/// An annunciator panel: a title and its lamps in every row.
class AnnunciatorPanel : public Display {
   public:
    /// The rows keep their titles and their number of lamps for good.
    AnnunciatorPanel(wxWindow* parent, std::vector<LampRow> rows);

    /// Draws again what has changed.
    void SetLamps(const std::vector<LampRow>& rows);

   protected:
    wxSize DoGetBestClientSize() const override;
    void Draw(wxDC& dc) override;

   private:
    void Measure();
    void DescribeLamps();

    std::vector<LampRow> rows_;
    std::vector<std::vector<wxRect>> places_;  // of the lamps
    wxSize size_;
};

/// The simulator's screen, with the text that a client has put there.
class ScreenPanel final : public Display {
   public:
    explicit ScreenPanel(wxWindow* parent);
    void SetText(const std::string& text);

   protected:
    wxSize DoGetBestClientSize() const override;
    void Draw(wxDC& dc) override;

   private:
    wxString text_;
};

}  // namespace quirkmeter::practice
