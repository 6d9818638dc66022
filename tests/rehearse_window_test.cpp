// The window of rehearse: its controls, worked by events, and the figures that it shows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <wx/dnd.h>
#include <wx/modalhook.h>
#include <wx/spinctrl.h>
#include <wx/wx.h>

#include <filesystem>
#include <fstream>

#include "model/catalogue.h"
#include "rehearse/window.h"

namespace quirkmeter::rehearse {

namespace {

using testing::HasSubstr;

class RehearseWindowTest : public testing::Test {
   protected:
    ~RehearseWindowTest() override { frame_->Destroy(); }

    void Drop(const std::string& lines) {
        std::ofstream(file_) << lines;
        wxArrayString files(1, wxString(file_.string()));
        dynamic_cast<wxFileDropTarget&>(*frame_->GetDropTarget()).OnDropFiles(0, 0, files);
        wxTheApp->ProcessPendingEvents();
        std::filesystem::remove(file_);
    }
    // The n-th control of the class, in TAB order.
    template <typename Control>
    Control* Find(int n = 0) {
        std::vector<Control*> found;
        auto search = [&found](auto& self, wxWindow* in) -> void {
            if (auto* control = dynamic_cast<Control*>(in)) found.push_back(control);
            for (wxWindow* child : in->GetChildren()) self(self, child);
        };
        search(search, frame_);
        return found.at(static_cast<std::size_t>(n));
    }
    static void Set(wxSpinCtrlDouble* spin, double value) {
        wxSpinDoubleEvent event(wxEVT_SPINCTRLDOUBLE, spin->GetId());
        spin->SetValue(value);
        spin->ProcessWindowEvent(event);
    }
    template <typename Control>
    static void Set(Control* control, const wxEventTypeTag<wxCommandEvent>& type, int value) {
        wxCommandEvent event(type, control->GetId());
        control->SetValue(value);
        control->ProcessWindowEvent(event);
    }
    // The figures by calculation.
    std::string Forecast() {
        wxString texts;
        for (int row = 0; row < 8; ++row)
            for (wxWindow* cell : {Text(2 * row), Text(2 * row + 1)})
                if (!cell->GetLabel().empty()) texts += cell->GetLabel().Trim(false) + "|";
        return texts.utf8_string();
    }
    wxWindow* Text(int cell) { return Find<wxStaticText>(3 + cell); }

    std::filesystem::path file_ = std::filesystem::temp_directory_path() / "wished.qmp";
    wxFrame* frame_ = MakeFrame();
};

std::string Expected(const std::string& nothingFails, const std::string& failures,
                     const std::vector<std::pair<std::string, std::string>>& likeliest) {
    std::string texts = "Flights in which nothing fails|" + nothingFails +
                        "|Failures in a flight|" + failures + "|Likeliest to fail:|";
    for (const auto& [name, share] : likeliest)
        texts.append(name).append("|").append(share).append("|");
    return texts;
}

TEST_F(RehearseWindowTest, ShowsTheFiguresOfTheProfileAndTheFlight) {
    constexpr char Vacuum[] = "Instrument - Vacuum", Adf[] = "Radio - ADF";
    Drop("6#9#50#1\r\n7#1#50#1\r\n4#5#50#1\r\n");
    EXPECT_EQ(Forecast(), Expected("6.25 %", "1.50", {{Vacuum, "75.00 %"}, {Adf, "75.00 %"}}));
    Set(Find<wxSpinCtrlDouble>(), 1);
    EXPECT_EQ(Forecast(), Expected("25.00 %", "1.00", {{Vacuum, "50.00 %"}, {Adf, "50.00 %"}}));
    auto* engines = Find<wxSpinCtrl>();
    wxSpinEvent spun(wxEVT_SPINCTRL, engines->GetId());
    engines->SetValue(3);
    engines->ProcessWindowEvent(spun);
    EXPECT_THAT(Forecast(), HasSubstr("|12.50 %|Failures in a flight|1.50|"));
    Drop("6#9#90#1\r\n");
    EXPECT_EQ(Forecast(), Expected("90.00 %", "0.10", {{Vacuum, "10.00 %"}}));
}

TEST_F(RehearseWindowTest, MeetsTheWish) {
    Drop("6#9#50#1\r\n7#1#50#1\r\n");
    auto* slider = Find<wxSlider>();
    auto* percent = Find<wxSpinCtrlDouble>(1);
    EXPECT_EQ(slider->GetValue(), 6);
    EXPECT_DOUBLE_EQ(percent->GetValue(), 6.3) << "the profile's own chance";
    Set(slider, wxEVT_SLIDER, 30);
    EXPECT_DOUBLE_EQ(percent->GetValue(), 30);
    EXPECT_THAT(Forecast(), HasSubstr("|30.00 %|"));
    Set(percent, 80);
    EXPECT_EQ(slider->GetValue(), 80);
    EXPECT_THAT(Forecast(), HasSubstr("|80.00 %|"));
    Set(Find<wxCheckBox>(6), wxEVT_CHECKBOX, false);
    EXPECT_EQ(Forecast(), Expected("80.00 %", "0.20", {{"Instrument - Vacuum", "20.00 %"}}));
    EXPECT_FALSE(Find<wxCheckBox>()->IsEnabled()) << "no sub-system of the autopilot can fail";
    Set(Find<wxCheckBox>(5), wxEVT_CHECKBOX, false);
    EXPECT_THAT(Forecast(), HasSubstr("|100.00 %|"));
    EXPECT_TRUE(wxWindow::FindWindowByLabel(
        "This wish cannot be met. The figures above are the nearest.", frame_));
    Drop("6#9#50#1\r\n");
    EXPECT_THAT(Forecast(), HasSubstr("|25.00 %|")) << "another profile begins without a wish";
}

TEST_F(RehearseWindowTest, AWishKeepsTheHoursUnlessTheReliabilityWouldLeaveItsRange) {
    auto hoursFor = [this](const char* profile, double wish) {
        Drop(profile);
        Set(Find<wxSpinCtrlDouble>(1), wish);
        return Catalogue[6][9].Hours.Text();
    };
    EXPECT_EQ(hoursFor("6#9#50#1\r\n", 80), "1");
    EXPECT_EQ(hoursFor("6#9#99#1\r\n", 99.9), "10") << "three decimals are too coarse in an hour";
    EXPECT_NE(hoursFor("6#9#50#24\r\n", 1), "24") << "one draw in 24 hours comes too seldom";
    EXPECT_THAT(Forecast(), HasSubstr("|1.00 %|"));
}

TEST_F(RehearseWindowTest, ABadProfileIsReportedAndTheOpenOneStays) {
    struct : wxModalDialogHook {
        int Enter(wxDialog*) override { return ++Shown, wxID_OK; }
        int Shown = 0;
    } messages;
    messages.Register();
    Drop("6#9#50#1\r\n");
    std::string before = Forecast();
    Drop("6#9#40#1\r\nsix\r\n");
    messages.Unregister();
    EXPECT_EQ(messages.Shown, 1);
    EXPECT_EQ(Forecast(), before);
    EXPECT_EQ(Catalogue[6][9].Reliability.Text(), "50");
}

}  // namespace

}  // namespace quirkmeter::rehearse
