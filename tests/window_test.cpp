// The real windows with their real controls on a display, worked by mouse and keyboard, over the
// in-process platform: the simulator, the clock and the files are the test's.
#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/filedlg.h>
#include <wx/modalhook.h>
#include <wx/msgdlg.h>
#include <wx/panel.h>
#include <wx/uiaction.h>

#include "engine/tick.h"
#include "native.h"
#include "program_test.h"
#include "ui/frm_main.h"
#include "ui/frm_options.h"
#include "ui/frm_settings.h"
#include "ui/look.h"
#include "window_texts.h"

namespace quirkmeter {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void HandleEvents() {
    for (int i = 0; i < 3; ++i) {
        wxTheApp->ProcessPendingEvents();
        wxYield();
    }
}

// Waits until the condition holds, handling events; false when it never does.
bool Until(const std::function<bool()>& condition) {
    wxMilliClock_t end = wxGetLocalTimeMillis() + 5000;
    while (!condition()) {
        if (wxGetLocalTimeMillis() > end) return false;
        HandleEvents();
    }
    return true;
}

// Acts once, as soon as the condition holds, in whatever event loop is running then.
void WhenTrue(std::function<bool()> condition, std::function<void()> act) {
    auto* timer = new wxTimer;
    timer->Bind(wxEVT_TIMER, [=](wxTimerEvent&) {
        if (!condition()) return;
        timer->Stop();
        act();
        wxTheApp->ScheduleForDestruction(timer);
    });
    timer->Start(5);
}

std::string Caption(wxWindow* control) {
    return look::Stored(wxControl::RemoveMnemonics(native::Text(control)));
}

std::string RowTexts(wxListCtrl* list, long row) {
    wxString texts;
    for (int column = 0; column < list->GetColumnCount(); ++column)
        texts += (column > 0 ? "|" : "") + list->GetItemText(row, column);
    return look::Stored(texts);
}

std::string ColumnTitles(wxListCtrl* list) {
    wxString titles;
    for (int column = 0; column < list->GetColumnCount(); ++column) {
        wxListItem title;
        title.SetMask(wxLIST_MASK_TEXT);
        list->GetColumn(column, title);
        titles += (column > 0 ? "|" : "") + title.GetText();
    }
    return look::Stored(titles);
}

// A line for every text that a window shows: its title, then what is in it.
std::string Texts(wxWindow* window) {
    if (!window->IsShown()) return "";
    std::string lines;
    auto add = [&lines](const std::string& text) {
        if (!text.empty()) lines += text + "\n";
    };
    if (auto* systems = dynamic_cast<wxListBox*>(window)) {
        for (const wxString& title : systems->GetStrings()) add(look::Stored(title));
    } else if (auto* rows = dynamic_cast<wxListCtrl*>(window)) {
        add(ColumnTitles(rows));
        for (long row = 0; row < rows->GetItemCount(); ++row) add(RowTexts(rows, row));
    } else if (auto* list = dynamic_cast<PickList*>(window)) {
        add("[" + look::Stored(list->GetValue()) + "]");
    } else {
        // A panel has a text, too, which nobody sees.
        if (!dynamic_cast<wxPanel*>(window)) add(look::Stored(native::Text(window)));
        for (wxWindow* child : window->GetChildren()) lines += Texts(child);
    }
    return lines;
}

// Knows the modal dialogs that are open, and answers the system's message boxes as a user would.
class Modals final : public wxModalDialogHook {
   public:
    Modals() { Register(); }
    ~Modals() override { Unregister(); }

    /// The dialog opened last.
    wxDialog* Last() const { return open_.empty() ? nullptr : open_.back(); }

    /// True when the dialog opened last has the keyboard. What is the system's own does not know it
    /// by itself.
    bool LastHasKeyboard() const {
        if (dynamic_cast<wxFileDialog*>(Last())) {
            wxString title = native::KeyboardTitle();
            return title == "Save As" || title == "Open";
        }
        auto* box = dynamic_cast<wxMessageDialogBase*>(Last());
        if (!box) return Last()->IsShownOnScreen() && Last()->IsActive();
        auto* main = dynamic_cast<frmMain*>(TheMainWindow);
        return !main->IsActive() && native::KeyboardTitle() == box->GetTitle();
    }

    std::vector<std::string> Messages;
    /// Runs while a message box is open.
    std::function<void()> Meanwhile = [] {};

   private:
    int Enter(wxDialog* dialog) override {
        open_.push_back(dialog);
        if (auto* box = dynamic_cast<wxMessageDialogBase*>(dialog))
            WhenTrue([this] { return LastHasKeyboard(); }, [this, box] { Answer(box); });
        return wxID_NONE;
    }
    void Exit(wxDialog*) override { open_.pop_back(); }

    void Answer(wxMessageDialogBase* box) {
        EXPECT_EQ(native::KeyboardTitle(), "FS2002 Quirkmeter");
        EXPECT_EQ(box->GetMessageDialogStyle() & (wxYES_NO | wxCANCEL), 0);
        bool warning = box->GetMessageDialogStyle() & wxICON_WARNING;
        Messages.push_back((warning ? "! " : "") + look::Stored(native::Text(box)));
        Meanwhile();
        wxUIActionSimulator().Char(WXK_RETURN);
    }

    std::vector<wxDialog*> open_;
};

class WindowTest : public ProgramTest {
   protected:
    WindowTest() {
        InstallSounds();
        Open();
    }
    ~WindowTest() override {
        Close();
        HandleEvents();
    }

    void Open() {
        ResetProgramState();
        main_ = new frmMain;
        ASSERT_TRUE(main_->Load());
        main_->tmrTimer.Stop();  // ticks come from the test
        inprocess::TakeSounds();
        main_->Show();
        main_->Raise();
        Until([this] { return main_->IsShownOnScreen() && main_->IsActive(); });
        HandleEvents();
    }
    void Close() {
        if (!main_) return;
        main_->Close(true);
        main_ = nullptr;
        HandleEvents();
    }

    void Tick() {
        inprocess::AdvanceClock(1);
        EngineTick();
        HandleEvents();
    }

    void ClickOn(wxWindow* window, wxPoint at) {
        wxUIActionSimulator mouse;
        EXPECT_TRUE(Until([&] {
            wxPoint place = window->ClientToScreen(at);
            mouse.MouseMove(place);
            HandleEvents();
            wxWindow* found = wxFindWindowAtPoint(place);
            return found && wxGetTopLevelParent(found) == wxGetTopLevelParent(window);
        })) << "a new window may still be on its way to its place";
        mouse.MouseClick();
        HandleEvents();
        EXPECT_TRUE(Until([this] { return waiting_ == 0; })) << "the dialog that was to open";
    }
    void Click(wxWindow* control) {
        wxSize size = control->GetSize();
        ClickOn(control, wxPoint(size.x / 2, size.y / 2));
    }
    void ClickRow(int row) {
        wxRect place;
        main_->lvwSubSystems->EnsureVisible(row - 1);
        main_->lvwSubSystems->GetItemRect(row - 1, place);
        ClickOn(main_->lvwSubSystems, place.GetPosition() + wxPoint(60, place.height / 2));
    }
    void ClickRowAndCancel(int row) {
        WhenOpen<frmReliability>([this](frmReliability* dialog) { Click(dialog->cmdCancel); });
        ClickRow(row);
        EXPECT_EQ(waiting_, 0);
    }
    void Key(int key, int modifiers = wxMOD_NONE) {
        wxUIActionSimulator keyboard;
        keyboard.Char(key, modifiers);
        HandleEvents();
    }
    void ChooseSystem(int system) {
        main_->lstSystems->SetSelection(system - 1);
        wxCommandEvent event(wxEVT_LISTBOX, main_->lstSystems->GetId());
        event.SetEventObject(main_->lstSystems);
        main_->lstSystems->ProcessWindowEvent(event);
    }

    // Does something while the next dialog of that class is open; it must close the dialog.
    template <typename Dialog>
    void WhenOpen(std::function<void(Dialog*)> act) {
        ++waiting_;
        WhenTrue(
            [this] { return dynamic_cast<Dialog*>(modals_.Last()) && modals_.LastHasKeyboard(); },
            [this, act] {
                --waiting_;
                act(static_cast<Dialog*>(modals_.Last()));
            });
    }

    // Presses the button and types the file's name into the file dialog, which shows the test's
    // folder; none cancels it.
    void ChooseFile(wxButton* button, const std::string& path, bool tick = false) {
        WhenOpen<wxFileDialog>([this, path, tick](wxFileDialog* dialog) {
            EXPECT_EQ(dialog->GetWildcard(), "FS2002 Quirkmeter Profile (*.qmp)|;*.qmp");
            if (tick) Tick();
            if (!path.empty()) native::TypeFileName(platform::FileName(path));
            HandleEvents();
            // The first key may go to the completion of the name.
            EXPECT_TRUE(Until([&] {
                Key(path.empty() ? WXK_ESCAPE : WXK_RETURN);
                return !dialog->IsShown();
            }));
        });
        Click(button);
        EXPECT_TRUE(Until([this] { return waiting_ == 0 && !modals_.Last(); }));
    }

    std::string Cell(int row, int column) {
        return look::Stored(main_->lvwSubSystems->GetItemText(row - 1, column));
    }
    int Icon(int row) {
        wxListItem item;
        item.SetId(row - 1);
        item.SetMask(wxLIST_MASK_IMAGE);
        main_->lvwSubSystems->GetItem(item);
        return item.GetImage();
    }
    std::vector<std::string> Row(int row) {
        return {Cell(row, 0), Cell(row, 1), Cell(row, 2), Cell(row, 3)};
    }
    long Selected() {
        return main_->lvwSubSystems->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED) + 1;
    }

    frmMain* main_ = nullptr;
    int waiting_ = 0;
    Modals modals_;
};

TEST_F(WindowTest, StartShowsTheAutopilotAndNoConnection) {
    EXPECT_EQ(main_->lvwSubSystems->GetItemCount(), 14);
    EXPECT_THAT(Row(1), ElementsAre(" Airspeed", "100%", "1 hour of flight", "Never"));
    EXPECT_EQ(Icon(14), 0);
    EXPECT_EQ(Selected(), 1);
    EXPECT_EQ(native::Text(main_->cmdSetSystemRel), "Set Autopilot &Reliabilities");
    EXPECT_EQ(Caption(main_->lblSubSystems), "Sub-systems");
    EXPECT_EQ(Caption(main_->lblStatus), "FSUIPC - No connection to Flight Simulator.");
    EXPECT_EQ(main_->GetTitle(), "FS2002 Quirkmeter");
    EXPECT_EQ(main_->lstSystems->GetString(6), " Radio");

    ChooseSystem(4);
    EXPECT_EQ(native::Text(main_->cmdSetSystemRel), "Set Engine &Reliabilities");
    EXPECT_EQ(main_->lvwSubSystems->GetItemCount(), 8);
    Catalogue[4][2].Reliability = "99.5";
    Catalogue[4][2].Hours = "0.5";
    main_->RefreshSubsystems(false);
    EXPECT_THAT(Row(2), ElementsAre(" Engine 1 (Stall)", "99.5%", "0.5 hours of flight", "No"));
    EXPECT_EQ(Icon(2), 2);
    AddFailure(4, 2);
    main_->RefreshSubsystems(true);
    EXPECT_EQ(Cell(2, 3), "Yes");
    EXPECT_EQ(Icon(2), 1);
}

// Read from the system's own controls: the same on every system.
TEST_F(WindowTest, EveryTextIsShownAsItStands) {
    std::string texts = Texts(main_);
    for (int system = 2; system <= 7; ++system) {
        ChooseSystem(system);
        texts += "\n" + look::Stored(native::Text(main_->cmdSetSystemRel)) + "\n" +
                 Texts(main_->lvwSubSystems);
    }
    auto cancel = [this, &texts](auto* dialog) {
        texts += "\n" + Texts(dialog);
        Click(dialog->cmdCancel);
    };
    WhenOpen<frmReliability>(cancel);
    ClickRow(1);
    WhenOpen<frmReliability>(cancel);
    Click(main_->cmdSetAllRel);
    WhenOpen<frmOptions>([&](frmOptions* dialog) {
        texts += "\n" + Texts(dialog);
        WhenOpen<frmSettings>(cancel);
        Click(dialog->cmdSettings);
    });
    Click(main_->cmdOptions);
    main_->ShowSubsystemList(false);
    texts += "\n" + Texts(main_);
    EXPECT_EQ(texts, WindowTexts);
}

TEST_F(WindowTest, TabGoesThroughTheControlsInOrder) {
    EXPECT_EQ(wxWindow::FindFocus(), main_->lstSystems);
    std::vector<wxWindow*> order = {
        main_->lvwSubSystems, main_->cmdSetAllRel, main_->cmdSetSystemRel, main_->cmdClearFailures,
        main_->cmdSaveAs,     main_->cmdOpen,      main_->cmdOptions};
    for (wxWindow* expected : order) {
        Key(WXK_TAB);
        EXPECT_TRUE(Until([&] {
            wxWindow* focus = wxWindow::FindFocus();
            return focus == expected || (focus && focus->GetParent() == expected);
        })) << look::Stored(expected->GetLabel());
    }
}

TEST_F(WindowTest, ClickOpensTheDialogOfTheRowAndAcceptStores) {
    WhenOpen<frmReliability>([this](frmReliability* dialog) {
        EXPECT_EQ(dialog->GetTitle(), " Autopilot - Altitude Reliability");
        EXPECT_EQ(dialog->cboRelLeft->GetValue(), "100");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "000");
        EXPECT_EQ(dialog->cboHours->GetValue(), "1");
        EXPECT_TRUE(dialog->cmdTest->IsShown());
        // By keyboard: a percentage, the next list, the hours, Enter.
        dialog->cboRelLeft->SetFocus();
        HandleEvents();
        Key('5');
        Key('0');
        EXPECT_EQ(dialog->cboRelLeft->GetValue(), "50");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "999");
        dialog->cboRelRight->SetFocus();
        HandleEvents();
        for (char digit : {'2', '5', '0'}) Key(digit);
        Tick();  // in between, as ticks come
        dialog->cboHours->SetFocus();
        HandleEvents();
        Key('2');
        Key('4');
        Click(dialog->cmdAccept);
    });
    ClickRow(2);
    EXPECT_EQ(waiting_, 0);
    EXPECT_THAT(Row(2), ElementsAre(" Altitude", "50.25%", "24 hours of flight", "No"));
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(Catalogue[1][2].RangeHigh - Catalogue[1][2].RangeLow, 49750);
}

TEST_F(WindowTest, ReleaseOfTheButtonAloneIsNoClick) {
    wxUIActionSimulator mouse;
    mouse.MouseMove(main_->lblSubSystems->ClientToScreen(wxPoint(5, 5)));
    HandleEvents();
    mouse.MouseDown();
    HandleEvents();
    mouse.MouseMove(main_->lvwSubSystems->ClientToScreen(wxPoint(60, 60)));
    HandleEvents();
    bool opened = false;
    WhenOpen<frmReliability>([this, &opened](frmReliability* dialog) {
        opened = true;
        Click(dialog->cmdCancel);
    });
    mouse.MouseUp();
    HandleEvents();
    EXPECT_FALSE(opened);
    ClickRow(1);
    EXPECT_TRUE(opened);
}

TEST_F(WindowTest, PlacesFollowTheScaleOfTheDisplay) {
    std::vector<wxWindow*> controls = {main_->lstSystems, main_->lvwSubSystems, main_->cmdOptions,
                                       main_->Frame1, main_->lblStatus};
    std::vector<wxRect> before;
    for (wxWindow* control : controls) before.push_back(control->GetRect());
    wxDPIChangedEvent change(wxSize(96, 96), wxSize(192, 192));
    main_->ProcessWindowEvent(change);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        EXPECT_EQ(controls[i]->GetPosition(), before[i].GetPosition() * 2) << i;
        EXPECT_EQ(controls[i]->GetSize(), before[i].GetSize() * 2) << i;
    }
}

TEST_F(WindowTest, EnterAndSpaceOpenTheDialogAndEscapeLeavesIt) {
    for (int key : {WXK_RETURN, WXK_SPACE}) {
        main_->lvwSubSystems->SetFocus();
        HandleEvents();
        WhenOpen<frmReliability>([this](frmReliability* dialog) {
            EXPECT_EQ(dialog->GetTitle(), " Autopilot - Airspeed Reliability");
            Click(dialog->cboHours);
            Key(WXK_ESCAPE);  // the list
            if (dialog->IsModal()) Key(WXK_ESCAPE);
        });
        Key(key);
        EXPECT_TRUE(Until([this] { return waiting_ == 0 && !modals_.Last(); }));
    }
    EXPECT_THAT(Row(1), ElementsAre(" Airspeed", "100%", "1 hour of flight", "Never"));
}

TEST_F(WindowTest, TestAndClearFailureActOnTheirSubsystem) {
    auto press = [this](int row, wxButton* frmReliability::*button, auto meanwhile) {
        WhenOpen<frmReliability>([=, this](frmReliability* dialog) {
            dialog->cboRelLeft->SetStringSelection("5");  // not returned by these buttons
            meanwhile();
            Click(dialog->*button);
        });
        ClickRow(row);
        EXPECT_EQ(waiting_, 0);
    };
    auto nothing = [] {};
    press(3, &frmReliability::cmdTest, nothing);
    EXPECT_EQ(FailureCount, 0);
    EXPECT_THAT(modals_.Messages,
                ElementsAre("You'll need to have Flight Simulator 2002 running first and "
                            "you'll also need the fsuipc module installed."));

    TestSimulator simulator;
    Tick();
    ASSERT_TRUE(Engine.Connected);
    press(3, &frmReliability::cmdTest, nothing);
    EXPECT_THAT(Row(3), ElementsAre(" Approach", "100%", "1 hour of flight", "Yes"));
    EXPECT_EQ(Icon(3), 1);
    press(3, &frmReliability::cmdTest, [this] { Tick(); });
    EXPECT_EQ(FailureCount, 1) << "never twice";
    // A tick under the dialog loses the failure that the button is to test again.
    press(3, &frmReliability::cmdTest, [this, &simulator] {
        simulator.Reply = 0;
        Tick();
        EXPECT_EQ(FailureCount, 0);
        simulator.Reply = 1;
        Tick();
    });
    EXPECT_EQ(FailureCount, 1);
    press(3, &frmReliability::cmdClear, [] { AddFailure(1, 4); });
    EXPECT_EQ(Cell(3, 3), "Never");
    EXPECT_EQ(Cell(4, 3), "Yes");
    EXPECT_EQ(Selected(), 3);
}

TEST_F(WindowTest, ButtonsSetASystemOrAll) {
    auto accept = [this](wxButton* button, const char* title, const char* percent) {
        WhenOpen<frmReliability>([=, this](frmReliability* dialog) {
            EXPECT_EQ(dialog->GetTitle(), title);
            EXPECT_FALSE(dialog->cmdTest->IsShown());
            EXPECT_FALSE(dialog->cmdClear->IsShown());
            dialog->cboRelLeft->SetFocus();
            HandleEvents();
            for (const char* digit = percent; *digit; ++digit) Key(*digit);
            Key(WXK_RETURN);
        });
        Click(button);
        EXPECT_EQ(waiting_, 0);
    };
    AddFailure(2, 3);
    ClickRowAndCancel(12);
    ChooseSystem(2);
    EXPECT_EQ(Selected(), 1);
    accept(main_->cmdSetSystemRel, " Control Reliabilities", "7");
    EXPECT_EQ(Catalogue[2][7].Reliability, "7.999");
    EXPECT_EQ(Catalogue[1][1].Reliability, "100");
    EXPECT_EQ(Selected(), 1) << "the row clicked last is not among these";
    accept(main_->cmdSetAllRel, "All Reliabilities", "0");
    ForEachSubsystem([](int, int, const SubsystemEntry& entry) {
        EXPECT_EQ(entry.Reliability, "0");
        EXPECT_EQ(entry.Hours, "1");
    });
    EXPECT_THAT(Row(3), ElementsAre(" Elevator Trim", "0%", "1 hour of flight", "Yes"));
    ChooseSystem(1);
    main_->RefreshSubsystems(true);
    EXPECT_EQ(Selected(), 12);
    Click(main_->cmdClearFailures);
    EXPECT_EQ(FailureCount, 0);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
}

TEST_F(WindowTest, ReliabilityListsHoldEachOther) {
    WhenOpen<frmReliability>([this](frmReliability* dialog) {
        auto pick = [](PickList* list, const char* text) { list->Pick(text); };
        EXPECT_EQ(dialog->cboRelLeft->GetCount(), 101u);
        EXPECT_EQ(dialog->cboRelRight->GetCount(), 1000u);
        EXPECT_EQ(dialog->cboHours->GetCount(), 1009u);
        EXPECT_EQ(dialog->cboHours->GetString(9), "0.9");
        EXPECT_EQ(dialog->cboHours->GetString(10), "1");
        EXPECT_EQ(dialog->cboRelRight->GetString(999), "000");
        pick(dialog->cboRelRight, "500");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "000") << "no more than 100";
        pick(dialog->cboRelLeft, "99");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "999");
        pick(dialog->cboRelLeft, "0");
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "000");
        pick(dialog->cboRelRight, "001");
        pick(dialog->cboHours, "0.5");
        Click(dialog->cmdAccept);
    });
    ClickRow(1);
    EXPECT_THAT(Row(1), ElementsAre(" Airspeed", "0.001%", "0.5 hours of flight", "No"));

    std::tuple<const char*, const char*, const char*, const char*, const char*> shown[] = {
        {"99.999", "0.5", "99", "999", "0.5"}, {"99.5", "0", "99", "500", "0.0"},
        {"0", "999", "0", "000", "999"},       {"99.9999", "0.04", "100", "000", "0.0"},
        {"50", "0.97", "50", "000", "1"},      {"50", "12.4", "50", "000", "12"}};
    for (auto [reliability, hours, left, right, based] : shown) {
        Catalogue[1][1].Reliability = reliability;
        Catalogue[1][1].Hours = hours;
        WhenOpen<frmReliability>([=, this](frmReliability* dialog) {
            EXPECT_EQ(dialog->cboRelLeft->GetValue(), left);
            EXPECT_EQ(dialog->cboRelRight->GetValue(), right);
            EXPECT_EQ(dialog->cboHours->GetValue(), based);
            Click(dialog->cmdCancel);
        });
        ClickRow(1);
        EXPECT_EQ(Catalogue[1][1].Reliability, reliability) << "cancelled";
    }
}

// The dialog reads its own point whatever the regional settings; everything else shows a comma.
TEST_F(WindowTest, CommaRoundTrip) {
    inprocess::SetDecimalSeparator(',');
    WhenOpen<frmReliability>([this](frmReliability* dialog) {
        dialog->cboRelLeft->SetStringSelection("99");
        dialog->cboRelRight->SetStringSelection("250");
        dialog->cboHours->SetStringSelection("0.5");
        Click(dialog->cmdAccept);
    });
    ClickRow(1);
    EXPECT_THAT(Row(1), ElementsAre(" Airspeed", "99,25%", "0,5 hours of flight", "No"));
    ChooseFile(main_->cmdSaveAs, (folder_ / "heavy").string());
    EXPECT_TRUE(ReadFile("heavy").starts_with("1#1#99,25#0,5\r\n"));
    Close();
    Open();
    EXPECT_THAT(Row(1), ElementsAre(" Airspeed", "99,25%", "0,5 hours of flight", "No"));
    EXPECT_EQ(Caption(main_->lblSubSystems), "Sub-systems (heavy)");
    WhenOpen<frmReliability>([this](frmReliability* dialog) {
        EXPECT_EQ(dialog->cboRelRight->GetValue(), "250");
        EXPECT_EQ(dialog->cboHours->GetValue(), "0.5");
        Click(dialog->cmdAccept);
    });
    ClickRow(1);
    EXPECT_EQ(Catalogue[1][1].Reliability, "99,25");
}

TEST_F(WindowTest, ProfilesAreSavedAndOpenedUnderTheNameGiven) {
    ChooseFile(main_->cmdSaveAs, "");  // cancelled
    EXPECT_EQ(Settings.LastProfile, "");
    Catalogue[1][3].Reliability = "12.5";
    std::string profile = (folder_ / "a&b").string();
    ChooseFile(main_->cmdSaveAs, profile);
    EXPECT_EQ(Caption(main_->lblSubSystems), "Sub-systems (a&b)");
    Catalogue[1][3].Reliability = "25";
    ChooseFile(main_->cmdSaveAs, profile);  // over the old one, without a question
    Catalogue[1][3].Reliability = "100";
    ChooseFile(main_->cmdOpen, profile, true);
    EXPECT_EQ(Cell(3, 1), "25%");
    EXPECT_EQ(Settings.LastProfile, profile);
    EXPECT_THAT(modals_.Messages, IsEmpty());

    modals_.Meanwhile = [this] { Tick(); };
    WriteFile("bad", "1#1#50");
    ChooseFile(main_->cmdOpen, (folder_ / "bad").string());
    EXPECT_THAT(modals_.Messages, ElementsAre("! Could not read " + (folder_ / "bad").string()));
    EXPECT_EQ(Settings.LastProfile, "");
    EXPECT_EQ(Caption(main_->lblSubSystems), "Sub-systems (a&b)");
    inprocess::FailCalls("ReplaceFile", 1, 1, 0);
    ChooseFile(main_->cmdSaveAs, profile);
    EXPECT_EQ(modals_.Messages.back(), "! Could not write " + profile);
    EXPECT_EQ(Settings.LastProfile, profile);

    // A name in letters that Windows' code page has not.
    inprocess::FailCalls("HoldsPath", 1, 2, 0);
    for (wxButton* button : {main_->cmdSaveAs, main_->cmdOpen}) {
        ChooseFile(button, (folder_ / "foreign").string());
        EXPECT_EQ(Settings.LastProfile, profile);
    }
    EXPECT_EQ(modals_.Messages.back(), "! Could not read " + (folder_ / "foreign").string());
    EXPECT_FALSE(std::filesystem::exists(folder_ / "foreign"));
}

TEST_F(WindowTest, OptionsLeadToHelpAndSettings) {
    WriteFile("Quirkmeter.htm", "");
    WhenOpen<frmOptions>([this](frmOptions* dialog) {
        EXPECT_EQ(dialog->GetTitle(), "Help");
        EXPECT_EQ(Caption(dialog->lblVersion), "FSQM Version 1.3");
        Key(WXK_RETURN);  // the default button
        EXPECT_TRUE(dialog->IsModal()) << "stays open";
        Key(WXK_ESCAPE);
    });
    Click(main_->cmdOptions);
    EXPECT_EQ(waiting_, 0);
    EXPECT_THAT(inprocess::TakeShellRuns(),
                ElementsAre(inprocess::ShellRun{"Open", (folder_ / "Quirkmeter.htm").string(), "0",
                                                "0", platform::ShowNormal}));
}

class SettingsWindowTest : public WindowTest {
   protected:
    // Works the settings dialog through the options dialog.
    void Edit(std::function<void(frmSettings*)> act) {
        WhenOpen<frmOptions>([this, act](frmOptions* options) {
            WhenOpen<frmSettings>([act](frmSettings* dialog) { act(dialog); });
            Click(options->cmdSettings);
        });
        Click(main_->cmdOptions);
        EXPECT_EQ(waiting_, 0);
        EXPECT_EQ(modals_.Last(), nullptr) << "both are closed";
    }
};

TEST_F(SettingsWindowTest, OkStoresEverything) {
    Edit([this](frmSettings* dialog) {
        EXPECT_EQ(dialog->cboStatus->GetCount(), 37u);
        EXPECT_EQ(dialog->cboStatus->GetValue(), "None");
        Click(dialog->chkDisplayStatus);
        Click(dialog->chkPlayFailureSound);
        dialog->cboStatus->SetFocus();
        HandleEvents();
        Key('S');
        EXPECT_EQ(dialog->cboStatus->GetValue(), "S");
        Click(dialog->chkStatusCTRL);
        Click(dialog->chkStatusSHIFT);
        Click(dialog->chkClearCTRL);  // of no key
        dialog->cboActive->SetStringSelection("0");
        Click(dialog->chkActiveSHIFT);
        Click(dialog->cmdOK);
    });
    SettingsRecord expected;
    expected.DisplayUpdate = expected.PlayFailureSound = true;
    expected.StatusHotkey = 83;
    expected.StatusHotkeyMods = 3;
    expected.ActiveHotkey = 48;
    expected.ActiveHotkeyMods = 2;
    EXPECT_EQ(Settings, expected);

    Edit([this](frmSettings* dialog) {
        EXPECT_TRUE(dialog->chkDisplayStatus->GetValue());
        EXPECT_FALSE(dialog->chkDisplayFailures->GetValue());
        EXPECT_EQ(dialog->cboStatus->GetValue(), "S");
        EXPECT_TRUE(dialog->chkStatusCTRL->GetValue() && dialog->chkStatusSHIFT->GetValue());
        EXPECT_EQ(dialog->cboClear->GetValue(), "None");
        EXPECT_FALSE(dialog->chkClearCTRL->GetValue());
        EXPECT_TRUE(!dialog->ChkActiveCTRL->GetValue() && dialog->chkActiveSHIFT->GetValue());
        Click(dialog->chkDisplayFailures);
        Click(dialog->cmdCancel);
    });
    EXPECT_EQ(Settings, expected) << "cancelled";
    Edit([this](frmSettings* dialog) { Click(dialog->cmdOK); });
    EXPECT_EQ(Settings, expected) << "unchanged";
}

TEST_F(SettingsWindowTest, HardcoreModeIsChosenOnTheGroundOnly) {
    auto toggle = [this] {
        Edit([this](frmSettings* dialog) {
            Click(dialog->chkHardcoreMode);
            Click(dialog->chkDisplayFailures);
            Click(dialog->cmdOK);
        });
    };
    modals_.Meanwhile = [this] { Tick(); };
    Engine.Airborne = true;
    toggle();
    EXPECT_FALSE(Settings.HardcoreMode);
    EXPECT_TRUE(Settings.DisplayFailures) << "the rest is stored all the same";
    Engine.Airborne = false;
    toggle();
    EXPECT_TRUE(Settings.HardcoreMode);
    EXPECT_FALSE(Settings.HardcoreActive);
    Engine.Airborne = true;
    toggle();
    EXPECT_TRUE(Settings.HardcoreMode);
    Engine.Airborne = false;
    toggle();
    EXPECT_FALSE(Settings.HardcoreMode);
    EXPECT_THAT(modals_.Messages,
                ElementsAre("Hardcore Mode cannot be enabled while airborne.",
                            "You must restart Quirkmeter for Hardcore Mode to be enabled.",
                            "Hardcore Mode cannot be disabled while airborne.",
                            "You must restart Quirkmeter for Hardcore Mode to be disabled."));
}

// On the ground, beside the companion.
class HardcoreWindowTest : public WindowTest {
   protected:
    HardcoreWindowTest() {
        Settings.HardcoreActive = true;
        Land();
    }
    ~HardcoreWindowTest() override {
        Engine.Airborne = false;  // or closing would end the flight
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
    platform::WindowHandle companion_ = platform::OwnWindow(
        "ThunderRT6FormDC", "FSQMHC", [](auto, auto, auto) { return std::intptr_t{0}; });
};

TEST_F(HardcoreWindowTest, LockRefusesWhatItMustAndNothingElse) {
    Tick();
    EXPECT_EQ(Caption(main_->lblStatus), "On hold (not airborne). Hardcore Mode.");
    EXPECT_TRUE(main_->lvwSubSystems->IsShown());
    AddFailure(1, 1);
    TakeOff();
    EXPECT_FALSE(main_->lvwSubSystems->IsShown());
    inprocess::TakeSounds();

    for (wxButton* button :
         {main_->cmdSetAllRel, main_->cmdSetSystemRel, main_->cmdClearFailures, main_->cmdOpen}) {
        EXPECT_TRUE(button->IsShown() && button->IsEnabled());
        Click(button);
    }
    EXPECT_EQ(modals_.Last(), nullptr);
    EXPECT_EQ(FailureCount, 1);
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty());

    std::string profile = (folder_ / "saved").string();
    ChooseFile(main_->cmdSaveAs, profile);
    WhenOpen<frmOptions>([this](frmOptions* dialog) { Click(dialog->cmdCancel); });
    Click(main_->cmdOptions);
    EXPECT_EQ(waiting_, 0);

    Land();
    EXPECT_TRUE(main_->lvwSubSystems->IsShown());
    Click(main_->cmdClearFailures);
    EXPECT_EQ(FailureCount, 0);
    TakeOff();
    simulator_.TakeWrites();
    double start = inprocess::Elapsed();
    Close();
    EXPECT_EQ(std::ranges::count(simulator_.Writes, SimWriteRecord{0x0560, 4, 0}), 3);
    EXPECT_NEAR(inprocess::Elapsed() - start, 2, 1e-6);
    EXPECT_EQ(ReadFile("Quirkmeter.ini"), "LASTPROFILE=" + profile + "\r\n");
}

TEST_F(HardcoreWindowTest, KeyboardWorksOnWhenTakeOffHidTheListUnderADialog) {
    WhenOpen<frmReliability>([&](frmReliability* dialog) {
        TakeOff();
        EXPECT_FALSE(main_->lvwSubSystems->IsShown());
        Click(dialog->cmdCancel);
    });
    ClickRow(1);
    EXPECT_TRUE(Until([this] { return main_->IsActive() && !modals_.Last(); }));
    HandleEvents();
    WhenOpen<frmOptions>([this](frmOptions* dialog) { Click(dialog->cmdCancel); });
    Key('P', wxMOD_ALT);
    EXPECT_TRUE(Until([this] { return waiting_ == 0; }));
}

TEST_F(WindowTest, MissingCompanionClosesTheWindow) {
    TestSimulator simulator;
    simulator.Space.SetValue(0x0366, 2, 0);
    Settings.HardcoreActive = Settings.HardcoreMode = true;
    Tick();
    Tick();
    main_ = nullptr;  // it has closed itself
    EXPECT_EQ(TheMainWindow, nullptr);
    EXPECT_EQ(std::ranges::count(simulator.Writes, SimWriteRecord{0x0574, 4, 0}), 3);
    EXPECT_EQ(ReadFile("Quirkmeter.ini"), "LASTPROFILE=\r\nHARDCOREMODE=YES\r\n");
}

TEST_F(WindowTest, StartUpReadsWhatWasSavedAndSecondInstanceDoesNothing) {
    Close();
    inprocess::FailCalls("ClaimSingleInstance", 1, 1, 0);
    std::filesystem::remove(folder_ / "Quirkmeter.ini");
    int calls = inprocess::CallCount("FindWindowExA");
    auto* second = new frmMain;
    EXPECT_FALSE(second->Load());
    second->Destroy();
    HandleEvents();
    EXPECT_FALSE(std::filesystem::exists(folder_ / "Quirkmeter.ini"));
    EXPECT_EQ(inprocess::CallCount("FindWindowExA"), calls);

    TestSimulator simulator;
    simulator.Space.SetValue(0x0366, 2, 1);
    WriteFile("damaged.qmp", "1#1#50#2\r\nx");
    WriteFile("Quirkmeter.ini",
              "LASTPROFILE=" + (folder_ / "damaged.qmp").string() + "\r\nDISPLAYFAILURES=YES\r\n");
    Open();
    EXPECT_EQ(modals_.Messages.size(), 1u);
    EXPECT_EQ(Catalogue[1][1].RangeHigh - Catalogue[1][1].RangeLow, 50000);
    EXPECT_EQ(Caption(main_->lblStatus), "On hold (not airborne).  No failures.");
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
