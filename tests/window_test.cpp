// The main window.
#include <wx/dcclient.h>
#include <wx/panel.h>

#include "ui/frm_options.h"
#include "ui/frm_settings.h"
#include "window_fixture.h"

namespace quirkmeter {

namespace {

// The texts of a window: its title, then all texts in it except those of the rows.
std::string Texts(wxWindow* window) {
    if (!window->IsShown()) return "";
    std::string texts;
    auto add = [&texts](const std::string& text) {
        if (!text.empty()) texts += (texts.empty() ? "" : "|") + text;
    };
    if (auto* systems = dynamic_cast<wxListBox*>(window)) {
        for (const wxString& title : systems->GetStrings()) add(look::Stored(title));
    } else if (auto* rows = dynamic_cast<wxListCtrl*>(window)) {
        for (int column = 0; column < rows->GetColumnCount(); ++column) {
            wxListItem title;
            title.SetMask(wxLIST_MASK_TEXT);
            rows->GetColumn(column, title);
            add(look::Stored(title.GetText()));
        }
    } else if (auto* list = dynamic_cast<PickList*>(window)) {
        add("[" + look::Stored(list->GetValue()) + "]");
    } else {
        // Skip panels: their texts are invisible.
        if (!dynamic_cast<wxPanel*>(window)) add(look::Stored(native::Text(window)));
        for (wxWindow* child : window->GetChildren()) add(Texts(child));
    }
    return texts;
}

int RangeWidth(int system, int subsystem) {
    const SubsystemEntry& entry = Catalogue[system][subsystem];
    return entry.RangeHigh - entry.RangeLow;
}

// The texts come from the native controls and are the same on every system.
TEST_F(WindowTest, EveryControlShowsItsText) {
    EXPECT_EQ(Texts(main_),
              "FS2002 Quirkmeter|Systems| Autopilot| Control| Electrical| Engine| Fuel| Instrument|"
              " Radio|Sub-systems|Component|Reliability|Based on|Failed|Set &All Reliabilities|"
              "Set Autopilot &Reliabilities|&Clear All Failures|&Save Profile|&Open Profile|"
              "O&ptions|Status|FSUIPC - No connection to Flight Simulator.");
    EXPECT_EQ(main_->lblStatus->GetToolTipText(), "FSUIPC - No connection to Flight Simulator.");
    EXPECT_FALSE(main_->GetIcons().IsEmpty()) << "the program's icon";
    EXPECT_EQ(main_->GetWindowStyle() & (wxRESIZE_BORDER | wxMAXIMIZE_BOX), 0) << "a fixed size";
    EXPECT_LE(main_->lstSystems->GetBestSize().y, main_->lstSystems->GetSize().y) << "seven show";
    for (int system = 1; system <= 7; ++system) {
        ChooseSystem(system);
        EXPECT_EQ(native::Text(main_->cmdSetSystemRel),
                  "Set" + std::string(SystemTitles[system]) + " &Reliabilities");
        EXPECT_EQ(main_->lvwSubSystems->GetItemCount(), SubsystemCount(system));
        wxRect lastRow;
        main_->lvwSubSystems->GetItemRect(SubsystemCount(system) - 1, lastRow);
        EXPECT_LT(lastRow.GetBottom(), main_->lvwSubSystems->GetSize().y) << "all rows show";
        for (int row = 1; row <= SubsystemCount(system); ++row)
            EXPECT_EQ(Row(row), "green " + std::string(Catalogue[system][row].Name) +
                                    "|100%|1 hour of flight|Never");
    }
    auto expect = [this](const char* texts) {
        return [this, texts](auto* dialog) {
            EXPECT_EQ(Texts(dialog), texts);
            Click(dialog->cmdCancel);
        };
    };
    ClickRow(1, expect(" Radio - ADF Reliability|[100]|[000]|[1]|.|%|based on|hours of flight|"
                       "&Accept|&Cancel|&Test Failure|Clear &Failure"));
    Work<frmReliability>(
        main_->cmdSetAllRel,
        expect("All Reliabilities|[100]|[000]|[1]|.|%|based on|hours of flight|&Accept|&Cancel"));
    Work<frmOptions>(main_->cmdOptions, [&](frmOptions* dialog) {
        EXPECT_EQ(Texts(dialog), "Help|&Help|&Settings|&Cancel|FSQM Version 1.3");
        Work<frmSettings>(
            dialog->cmdSettings,
            expect("Settings|&Display status changes in flight|Display &failure info in status|"
                   "&Play a sound when a failure occurs|&Hardcore Mode (see Options/Help)|"
                   "In Flight Status Hotkey|[None]|CTRL|SHIFT|"
                   "Clear Last Failure Hotkey|[None]|CTRL|SHIFT|"
                   "Activate/Deactivate QM Hotkey|[None]|CTRL|SHIFT|&OK|&Cancel"));
    });
    main_->ShowSubsystemList(false);
    EXPECT_THAT(
        Texts(main_),
        testing::HasSubstr(" Radio|Hardcore Mode ON.|The following options are not available while "
                           "airborne:|Sub-systems display|Reliability setting|Failure clearing|"
                           "Failure displaying|Profile opening|Deactivating|Sub-systems|"));
}

// On Linux, timers that are due run before painting.
TEST_F(WindowTest, IsPaintedBetweenTwoTicksThatTakeLongerThanASecond) {
    TestSimulator simulator;
    Tick();  // connects
    std::string order;
    simulator.Spoil = [&order](std::byte*) {
        order += "t";
        if (std::ranges::count(order, 't') < 4) wxMilliSleep(1100);
    };
    auto* painted = new wxWindow(main_, wxID_ANY, {0, 0}, {8, 8});
    painted->Bind(wxEVT_PAINT, [&order, painted](wxPaintEvent&) {
        wxPaintDC dc(painted);
        order += "p";
        painted->CallAfter([painted] { painted->Refresh(); });
    });
    main_->tmrTimer.StartOnce(1);
    EXPECT_TRUE(Until([&] { return std::ranges::count(order, 't') >= 4; }));
    main_->tmrTimer.Stop();
    EXPECT_EQ(order.find("tt"), order.npos) << "order of ticks (t) and paintings (p): " << order;
    painted->Destroy();
}

TEST_F(WindowTest, RowsShowWhichSubsystemsCanFailAndWhichHaveFailed) {
    ChooseSystem(4);
    Catalogue[4][2].Reliability = "99.5";
    Catalogue[4][2].Hours = "0.5";
    AddFailure(4, 3);
    main_->RefreshSubsystems();
    EXPECT_EQ(Row(2), "yellow Engine 1 (Stall)|99.5%|0.5 hours of flight|No");
    for (auto [row, colour] : {std::pair{2, look::Yellow}, {3, look::Red}, {4, look::BrightGreen}})
        EXPECT_TRUE(Until([&] {
            wxPoint disc(10, RowPlace(row).y);
            return native::ColourAt(main_->lvwSubSystems->ClientToScreen(disc)) == colour;
        })) << row;
}

TEST_F(WindowTest, PickingTheSameEntryAgainChangesNothing) {
    Catalogue[1][1].Reliability = "50.25";
    ClickRow(1, [this](frmReliability* dialog) {
        Open(dialog->cboRelLeft);
        Key(WXK_RETURN);
        EXPECT_TRUE(Until([dialog] { return !dialog->cboRelLeft->IsPopupShown(); }));
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "250");
        Key(WXK_ESCAPE);
    });
}

TEST_F(WindowTest, DialogOfARowTakesLettersAndAccessKeysAndStores) {
    ClickRow(2, [this](frmReliability* dialog) {
        EXPECT_EQ(dialog->GetTitle(), " Autopilot - Altitude Reliability");
        Type(dialog->cboRelLeft, "50");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "999");
        Type(dialog->cboRelRight, "250");
        Tick();  // in between, as ticks come
        Type(dialog->cboHours, "24");
        Key('A', wxMOD_ALT);
    });
    EXPECT_EQ(Row(2), "yellow Altitude|50.25%|24 hours of flight|No");
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(RangeWidth(1, 2), 49750);
}

TEST_F(WindowTest, ClickOnARowOpensOneDialogAndNothingElseDoes) {
    PointAt(main_->lblSubSystems, wxPoint(5, 5));
    Input().MouseDown();
    PointAt(main_->lvwSubSystems, RowPlace(2));
    Release();

    ChooseSystem(7);
    wxPoint pressed;
    auto expectRow = [this, &pressed](long row) {
        modals_.WhenOpen<frmReliability>([this, &pressed, row](frmReliability* dialog) {
            pressed = pressedAt_;
            EXPECT_EQ(dialog->GetTitle(),
                      " Radio - " + std::string(Catalogue[7][row].Name) + " Reliability");
            Click(dialog->cmdCancel);
        });
    };
    expectRow(3);
    PointAt(main_->lvwSubSystems, RowPlace(3));
    Input().MouseClick();
    Input().MouseDown();
    Release();

    Focus(main_->lstSystems);
    Click(main_->lvwSubSystems, RowPlace(4) + wxPoint(0, 40));  // below the rows
    AwaitFocus(main_->lvwSubSystems);
    EXPECT_EQ(Selected(), 3);
    PointAt(main_->lvwSubSystems, RowPlace(2));
    Input().MouseClick(wxMOUSE_BTN_RIGHT);
    HandleEvents();
    EXPECT_EQ(Selected(), 3) << "a right click changes nothing";
    PointAt(main_->lvwSubSystems, RowPlace(2));
    Input().MouseDown();
    PointAt(main_->lvwSubSystems, RowPlace(4));
    Release();
    expectRow(Selected());
    Key(WXK_RETURN);

    // Tick while the button is down. The native list on Windows runs its own event loop then.
    wxTimer tick;
    tick.Bind(wxEVT_TIMER, [this, &tick](wxTimerEvent&) {
        if (pressedAt_ == wxDefaultPosition) return;
        tick.Stop();
        main_->RefreshSubsystems();
        Input().MouseUp();
    });
    expectRow(4);
    PointAt(main_->lvwSubSystems, RowPlace(4));
    pressedAt_ = wxDefaultPosition;
    tick.Start(5);
    Input().MouseDown();
    AwaitDialogs(0);
}

TEST_F(WindowTest, LayoutsFollowTheScaleOfTheDisplay) {
    auto places = [this] {
        return std::vector{main_->lstSystems->GetRect(), main_->cmdOptions->GetRect(),
                           main_->Frame1->GetRect(), main_->lblStatus->GetRect()};
    };
    auto expected = places();
    for (wxRect& place : expected) place = wxRect(place.GetPosition() * 2, place.GetSize() * 2);
    wxDPIChangedEvent change(wxSize(96, 96), wxSize(192, 192));
    main_->ProcessWindowEvent(change);
    EXPECT_EQ(places(), expected);
}

TEST_F(WindowTest, EnterAndSpaceOpenTheDialogAndEscapeLeavesIt) {
    for (int key : {WXK_RETURN, WXK_SPACE}) {
        Focus(main_->lvwSubSystems);
        modals_.WhenOpen<frmReliability>([this](frmReliability* dialog) {
            EXPECT_EQ(dialog->GetTitle(), " Autopilot - Airspeed Reliability");
            Open(dialog->cboHours);
            Key(WXK_ESCAPE);
            EXPECT_TRUE(Until([dialog] { return !dialog->cboHours->IsPopupShown(); }));
            EXPECT_TRUE(dialog->IsModal()) << "only the list is closed";
            Focus(dialog->cmdAccept);
            Type(dialog->cboHours, "24");
            Key(WXK_ESCAPE);
        });
        Key(key);
    }
    EXPECT_EQ(Row(1), "green Airspeed|100%|1 hour of flight|Never");
}

TEST_F(WindowTest, TestAndClearFailureActOnTheirSubsystem) {
    auto press = [this](
                     auto button, const std::function<void()>& meanwhile = [] {}) {
        Catalogue[1][3].RangeHigh = 1234;
        ClickRow(3, [=, this](frmReliability* dialog) {
            dialog->cboRelLeft->SetStringSelection("5");  // these buttons leave it unchanged
            meanwhile();
            Click(dialog->*button);
        });
    };
    press(&frmReliability::cmdTest);
    EXPECT_EQ(FailureCount, 0);
    EXPECT_THAT(modals_.TakeMessages(),
                ElementsAre("You'll need to have Flight Simulator 2002 running first and "
                            "you'll also need the fsuipc module installed."));

    TestSimulator simulator;
    Tick();
    ASSERT_TRUE(EngineState.Connected);
    press(&frmReliability::cmdTest);
    EXPECT_EQ(Row(3), "red Approach|100%|1 hour of flight|Yes");
    EXPECT_EQ(Catalogue[1][3].RangeHigh, 1234) << "no new ranges";
    press(&frmReliability::cmdTest, [this] { Tick(); });
    EXPECT_EQ(FailureCount, 1) << "never twice";
    // A tick while the dialog is open loses the failure that the button is to test again.
    press(&frmReliability::cmdTest, [this, &simulator] {
        simulator.Reply = 0;
        Tick();
        EXPECT_EQ(FailureCount, 0);
        simulator.Reply = 1;
        Tick();
    });
    EXPECT_EQ(FailureCount, 1);
    press(&frmReliability::cmdClear, [] { AddFailure(1, 4); });
    EXPECT_EQ(Row(3), "green Approach|100%|1 hour of flight|Never");
    EXPECT_EQ(Row(4), "red Attitude|100%|1 hour of flight|Yes");
    EXPECT_EQ(Selected(), 3);
    EXPECT_EQ(Catalogue[1][3].RangeHigh, 1234) << "no new ranges";
}

TEST_F(WindowTest, ButtonsSetASystemOrAll) {
    auto accept = [this](wxButton* button, const char* shown, const char* percent) {
        Work<frmReliability>(button, [=, this](frmReliability* dialog) {
            EXPECT_EQ(dialog->GetTitle() + "|" + dialog->cboRelLeft->GetValue() + "." +
                          dialog->cboRelRight->GetValue() + "|" + dialog->cboHours->GetValue(),
                      shown);
            Type(dialog->cboRelLeft, percent);
            Key(WXK_RETURN);
        });
    };
    AddFailure(2, 3);
    ClickRow(14, Cancel());
    ChooseSystem(2);
    Catalogue[2][1].Reliability = "42.5";
    Catalogue[2][1].Hours = "24";
    accept(main_->cmdSetSystemRel, " Control Reliabilities|42.500|24", "7");
    EXPECT_EQ(Row(7), "yellow Throttle|7.999%|24 hours of flight|No");
    EXPECT_EQ(RangeWidth(2, 7), 92001);
    EXPECT_EQ(Catalogue[1][1].Reliability, "100");
    EXPECT_EQ(Selected(), 1) << "the row clicked last is not among these";
    for (wxButton* button : {main_->cmdSetSystemRel, main_->cmdSetAllRel})
        Work<frmReliability>(button, Cancel());
    EXPECT_EQ(Row(7), "yellow Throttle|7.999%|24 hours of flight|No");
    accept(main_->cmdSetAllRel, "All Reliabilities|100.000|1", "0");
    ForEachSubsystem([](int system, int subsystem, const SubsystemEntry& entry) {
        EXPECT_TRUE(entry.Reliability == "0" && entry.Hours == "1");
        EXPECT_EQ(RangeWidth(system, subsystem), 100000);
    });
    EXPECT_EQ(Row(3), "red Elevator Trim|0%|1 hour of flight|Yes");
    ChooseSystem(1);
    main_->RefreshSubsystems();
    EXPECT_EQ(Selected(), 14) << "again";
    inprocess::TakeSounds();
    Click(main_->cmdClearFailures);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
}

// On the ground, beside the companion.
class HardcoreWindowTest : public WindowTest {
   protected:
    HardcoreWindowTest() {
        Settings.HardcoreActive = true;
        Land();
    }
    ~HardcoreWindowTest() override {
        EngineState.Airborne = false;  // otherwise closing would end the flight
        platform::DropWindow(companion_);
    }

    void TakeOff() {
        simulator_.Space.SetValue(0x0366, 2, 0);
        Tick();
    }
    void Land() {
        simulator_.Space.SetValue(0x0366, 2, 1);
        Tick();
    }

    TestSimulator simulator_;
    platform::WindowHandle companion_ = platform::OwnWindow("ThunderRT6FormDC", "FSQMHC", {});
};

TEST_F(HardcoreWindowTest, LockRefusesTheLockedActionsOnly) {
    AddFailure(1, 1);
    TakeOff();
    EXPECT_FALSE(main_->lvwSubSystems->IsShown());
    inprocess::TakeSounds();
    for (wxButton* button :
         {main_->cmdSetAllRel, main_->cmdSetSystemRel, main_->cmdClearFailures, main_->cmdOpen}) {
        EXPECT_TRUE(button->IsShown() && button->IsEnabled());
        Click(button);
    }
    EXPECT_EQ(FailureCount, 1);
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty());
    Work<wxFileDialog>(main_->cmdSaveAs, [this](wxFileDialog*) { Key(WXK_ESCAPE); });
    Work<frmOptions>(main_->cmdOptions, Cancel());

    Land();
    EXPECT_TRUE(main_->lvwSubSystems->IsShown());
    Click(main_->cmdClearFailures);
    EXPECT_EQ(FailureCount, 0);
    TakeOff();
    simulator_.Batches = 0;
    simulator_.Spoil = [this](std::byte*) {
        EXPECT_EQ(ReadFile("Quirkmeter.ini"), "") << "before the price is paid";
    };
    Close();
    EXPECT_EQ(simulator_.Batches, 9);
    EXPECT_EQ(ReadFile("Quirkmeter.ini"), "LASTPROFILE=\r\n");
}

TEST_F(HardcoreWindowTest, TheFocusMovesWhenTakeOffHidesTheListUnderADialog) {
    ClickRow(1, [this](frmReliability* dialog) {
        TakeOff();
        EXPECT_FALSE(main_->lvwSubSystems->IsShown());
        Click(dialog->cmdCancel);
    });
    AwaitFocus(main_->lstSystems);
    modals_.WhenOpen<frmOptions>(Cancel());
    Key('P', wxMOD_ALT);
}

TEST_F(HardcoreWindowTest, MissingCompanionClosesTheWindow) {
    Settings.HardcoreMode = true;
    platform::DropWindow(companion_);
    TakeOff();
    main_ = nullptr;  // it has closed itself
    AwaitEnd();
    EXPECT_EQ(ReadFile("Quirkmeter.ini"), "LASTPROFILE=\r\nHARDCOREMODE=YES\r\n");

    // Here the companion ends during start-up, before the first tick.
    inprocess::FailCalls("FindWindowA", 2, 1, 0);
    companion_ = platform::OwnWindow("ThunderRT6FormDC", "FSQMHC", {});
    ResetProgramState();
    auto* ending = new frmMain;
    EXPECT_TRUE(ending->Load());
    ending->Start();
    AwaitEnd();
}

TEST_F(WindowTest, StartUpReadsTheSavedSettingsAndASecondInstanceEnds) {
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_warning.wav"));
    Close();
    for (auto [error, exitCode] : {std::pair{0u, 0}, std::pair{8u, 1}}) {
        inprocess::FailCalls("ClaimSingleInstance", 1, 1, error);
        auto* second = new frmMain;
        EXPECT_FALSE(second->Load());
        EXPECT_EQ(second->ExitCode(), exitCode);
        EXPECT_THAT(inprocess::TakeSounds(), IsEmpty());
        second->Destroy();
        AwaitEnd();
    }
    EXPECT_THAT(modals_.TakeMessages(), ElementsAre("FS2002 Quirkmeter cannot start. Error 8."))
        << "a second instance says nothing";

    TestSimulator simulator;
    simulator.Space.SetValue(0x0366, 2, 1);
    WriteFile("damaged.qmp", "1#1#50#2\r\nx");
    WriteFile("Quirkmeter.ini",
              "LASTPROFILE=" + (folder_ / "damaged.qmp").string() + "\r\nDISPLAYFAILURES=YES\r\n");
    Open();
    EXPECT_THAT(modals_.TakeMessages(),
                ElementsAre("! Could not read " + (folder_ / "damaged.qmp").string()));
    EXPECT_EQ(RangeWidth(1, 1), 50000);
    EXPECT_EQ(Caption(main_->lblStatus), "On hold (not airborne).  No failures.");
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
}

}  // namespace

}  // namespace quirkmeter

class WindowTestApp final : public wxApp {
   public:
    bool OnInit() override {
        wxSetAssertHandler([](const wxString& file, int line, const wxString&,
                              const wxString& condition, const wxString& message) {
            ADD_FAILURE_AT(file.utf8_str(), line) << condition << ": " << message;
        });
        return true;
    }
    int OnRun() override {
        SetExitOnFrameDelete(false);
        wxTheApp->CallAfter([this] {
            result_ = RUN_ALL_TESTS();
            ExitMainLoop();
        });
        wxApp::OnRun();
        return result_;
    }

   private:
    int result_ = 1;
};

wxIMPLEMENT_APP_NO_MAIN(WindowTestApp);

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return wxEntry(argc, argv);
}
