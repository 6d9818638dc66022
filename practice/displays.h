// The two displays of the practice simulator's window: the simulator's screen and the annunciator
// panel. Both are native texts, which screen readers read; neither takes the focus.
#pragma once

#include <wx/wx.h>

#include <string>
#include <vector>

#include "practice/effects.h"

namespace quirkmeter::practice {

/// A row of lamps behind each title.
class AnnunciatorPanel final : public wxWindow {
   public:
    /// The rows keep their titles and their numbers of lamps.
    AnnunciatorPanel(wxWindow* parent, std::vector<LampRow> rows);

    /// Changes the lamps that differ from what they show.
    void SetLamps(const std::vector<LampRow>& rows);
    bool AcceptsFocus() const override { return false; }

   private:
    wxStaticText* MakeLamp(const Lamp& lamp);
    void DescribeLamps();

    std::vector<LampRow> rows_;
    std::vector<std::vector<wxStaticText*>> lamps_;
};

/// The simulator's screen, with the text that a client has put there.
class ScreenPanel final : public wxWindow {
   public:
    explicit ScreenPanel(wxWindow* parent);
    void SetText(const std::string& text);
    bool AcceptsFocus() const override { return false; }

   private:
    wxStaticText* label_;
    wxString text_;
};

}  // namespace quirkmeter::practice
