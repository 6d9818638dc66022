// The practice simulator's window: its controls, worked by events, and its display of the flight.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <wx/display.h>
#include <wx/spinctrl.h>
#include <wx/stopwatch.h>
#include <wx/wx.h>

#include <cstring>
#include <limits>

#include "practice/variables.h"
#include "practice/window.h"

namespace quirkmeter::practice {

namespace {

class PracticeWindowTest : public testing::Test {
   protected:
    static bool Until(const std::function<bool()>& condition) {
        for (wxStopWatch watch; !condition() && watch.Time() < 30'000; wxMilliSleep(1)) wxYield();
        return condition();
    }
    template <typename Control>
    static Control* Find(wxWindow* in) {
        if (auto* found = dynamic_cast<Control*>(in)) return found;
        for (wxWindow* child : in->GetChildren())
            if (auto* found = Find<Control>(child)) return found;
        return nullptr;
    }
    wxWindow* Labelled(const wxString& label) {
        wxWindow* found = wxWindow::FindWindowByLabel(label, frame_);
        EXPECT_TRUE(found) << label;
        return found ? found : frame_;
    }
    static int Shown(wxWindow* control) {
        if (auto* box = dynamic_cast<wxCheckBox*>(control)) return box->GetValue();
        if (auto* button = dynamic_cast<wxRadioButton*>(control)) return button->GetValue();
        if (auto* slider = dynamic_cast<wxSlider*>(control)) return slider->GetValue();
        if (auto* spin = dynamic_cast<wxSpinCtrl*>(control)) return spin->GetValue();
        return dynamic_cast<wxChoice&>(*control).GetSelection();
    }
    // Works the control. The flight must change and the control must show the new value.
    void Work(wxWindow* control, int value, const std::string& event) {
        SCOPED_TRACE(event);
        wxSpinEvent spun(wxEVT_SPINCTRL, control->GetId());
        wxCommandEvent plain(dynamic_cast<wxCheckBox*>(control)      ? wxEVT_CHECKBOX
                             : dynamic_cast<wxRadioButton*>(control) ? wxEVT_RADIOBUTTON
                             : dynamic_cast<wxSlider*>(control)      ? wxEVT_SLIDER
                                                                     : wxEVT_CHOICE,
                             control->GetId());
        wxCommandEvent& sent = dynamic_cast<wxSpinCtrl*>(control) ? spun : plain;
        sent.SetInt(value);
        control->ProcessWindowEvent(sent);
        EXPECT_EQ(printed_.back(), event);
        EXPECT_EQ(Shown(control), value) << "shown by the control";
    }
    void Write(std::uint32_t offset, std::uint32_t size, std::uint64_t value) {
        std::vector<std::uint32_t> block(40);
        block[0] = 2, block[1] = offset, block[2] = size;
        std::memcpy(&block[3], &value, std::min(size, 8u));
        EXPECT_TRUE(simulator_.Answer(reinterpret_cast<std::byte*>(block.data()), 160));
    }

    std::vector<std::string> printed_;  // without the time
    Simulator simulator_{
        {}, std::numeric_limits<double>::infinity(), [this](const std::string& line) {
            printed_.push_back(line.substr(line.find("# ") + 2));
        }};
    wxFrame* frame_ = MakeFrame(simulator_);
};

TEST_F(PracticeWindowTest, EveryControlWorksTheFlight) {
    simulator_.Start("ready");
    frame_->Show();
    std::tuple<const char*, int, const char*> rows[] = {
        {"&Airborne", 1, "took off"},     {"&Paused", 1, "paused"},
        {"&Paused", 0, "resumed"},        {"Gear &down", 0, "gear up"},
        {"Gear &down", 1, "gear down"},   {"&Flaps down", 0, "flaps up"},
        {"&Flaps down", 1, "flaps down"}, {"On the &ground", 1, "landed"}};
    for (auto [label, value, event] : rows) Work(Labelled(label), value, event);
    Work(Find<wxSpinCtrl>(frame_), 3, "engines 3");
    auto* misbehaviour = Find<wxChoice>(frame_);
    for (int kind : {1, 2, 3, 4, 5, 0}) {
        Work(misbehaviour, kind, std::string("misbehave ") + MisbehaviourNames[kind]);
        EXPECT_TRUE(misbehaviour->GetString(static_cast<unsigned>(kind))
                        .Lower()
                        .StartsWith(MisbehaviourNames[kind]));
    }
    int percent = 10;
    for (const Variable& tank : VariablesOf(VariableKind::Tank)) {
        auto* slider = wxWindow::FindWindowByName(std::string(tank.Name) + " tank", frame_);
        std::string level = std::to_string(++percent) + " %";
        Work(slider, percent, "fuel " + std::string(tank.Name) + " " + level);
        EXPECT_EQ(slider->GetNextSibling()->GetLabel(), level) << tank.Name;
    }
    simulator_.End();
    EXPECT_TRUE(Until([] { return wxTopLevelWindows.empty(); })) << "it closes with the simulator";
}

TEST_F(PracticeWindowTest, LeavesTheLeftSideOfTheScreenToQuirkmeter) {
    frame_->Show();
    int right = wxDisplay(frame_).GetClientArea().GetRight();
    EXPECT_TRUE(Until([&] { return frame_->GetScreenRect().GetRight() == right; }));
    frame_->Destroy();
    EXPECT_TRUE(Until([] { return wxTopLevelWindows.empty(); }));
}

TEST_F(PracticeWindowTest, ShowsWhatAClientDoes) {
    simulator_.Start("ready");
    frame_->Show();
    EXPECT_FALSE(wxWindow::FindWindowByLabel("QM", frame_));
    Write(0x3380, 128, 'Q' | 'M' << 8);
    Write(0x32FA, 2, 5);
    Write(0x0B71, 1, 1);
    Write(0x3102, 1, 0);
    Write(0x0264, 2, 1);
    Write(0x0570, 4, 0);
    Write(0x0574, 4, 1000);
    Write(0x05DC, 2, 1);
    EXPECT_TRUE(Until([this] { return wxWindow::FindWindowByLabel("QM", frame_); }))
        << "the text on the simulator's screen";
    EXPECT_EQ(Shown(Labelled("&Paused")), 1);
    EXPECT_EQ(Labelled("Pitot Static")->GetBackgroundColour(), wxColour(0xD0, 0x10, 0x20));
    EXPECT_EQ(Labelled("Battery")->GetBackgroundColour(), wxColour(0xFF, 0xB4, 0x00));
    EXPECT_EQ(Labelled("Vacuum")->GetBackgroundColour(), wxColour(0x32, 0x36, 0x3A));
    Labelled(L"50.000\u00B0 N   8.500\u00B0 E   3281 ft (1000 m)   Slew on");
    frame_->Destroy();
    EXPECT_TRUE(Until([] { return wxTopLevelWindows.empty(); }));
}

}  // namespace

}  // namespace quirkmeter::practice
