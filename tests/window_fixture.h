// Works the real windows on a display by mouse and keyboard, over the in-process platform: the test
// controls the simulator, the clock and the files. Every wait has a deadline, and an unexpected
// dialog is closed, so that a test can fail but never hang.
#pragma once

#include <wx/app.h>
#include <wx/eventfilter.h>
#include <wx/filedlg.h>
#include <wx/modalhook.h>
#include <wx/msgdlg.h>
#include <wx/stopwatch.h>
#include <wx/uiaction.h>

#include <cstdlib>
#include <cstring>
#include <deque>

#include "engine/tick.h"
#include "native.h"
#include "program_test.h"
#include "ui/frm_main.h"
#include "ui/look.h"

namespace quirkmeter {

inline void HandleEvents() {
    wxTheApp->ProcessPendingEvents();
    wxYield();
}

/// The mouse and the keyboard. Created once, because that is slow.
inline wxUIActionSimulator& Input() {
    static wxUIActionSimulator input;
    return input;
}

/// Milliseconds until a window is raised again: a window manager may lose the focus when dialogs
/// open and close at once.
inline constexpr long RaiseAfter = 150;

/// True when the time is up. After a failure, a test waits only briefly.
inline bool IsOver(const wxStopWatch& watch, long milliseconds) {
    return watch.Time() > (testing::Test::HasFailure() ? 500 : milliseconds);
}

/// Handles events until the condition holds; false when it does not in time.
inline bool Until(const std::function<bool()>& condition, long milliseconds = 30'000) {
    wxStopWatch watch;
    while (!condition()) {
        if (IsOver(watch, milliseconds)) return false;
        wxMilliSleep(1);
        HandleEvents();
    }
    return true;
}

/// Handles the open modal dialogs. When one gets the focus, it runs the action that the test set
/// for it, or records the text of a message box and answers it. It closes a dialog that was not
/// expected, or that stays open, and the test fails.
class Modals final : public wxModalDialogHook, private wxTimer {
   public:
    Modals() {
        Register();
        StartOnce(Pulse);
    }
    ~Modals() override { Unregister(); }

    /// Sets the action for the next dialog, which is of that class. The action must close it.
    template <typename Dialog>
    void WhenOpen(const std::function<void(Dialog*)>& act) {
        expected_.push_back([act](wxDialog* opened) {
            auto* dialog = dynamic_cast<Dialog*>(opened);
            if (dialog) act(dialog);
            return dialog != nullptr;
        });
    }

    /// True when a dialog is still expected.
    bool Expecting() const { return !expected_.empty(); }
    std::size_t Count() const { return open_.size(); }
    /// The dialog opened last.
    wxDialog* Last() const { return open_.empty() ? nullptr : open_.back().Dialog; }

    std::vector<std::string> TakeMessages() { return std::exchange(messages_, {}); }
    /// Runs while a message box is open.
    std::function<void(wxMessageDialogBase*)> Meanwhile = [](auto*) {};

   private:
    static constexpr int Pulse = 5;           // milliseconds
    static constexpr long Patience = 20'000;  // milliseconds

    /// Returns false when the dialog is not of the expected class.
    using Act = std::function<bool(wxDialog*)>;
    enum class Stage { Opening, BeingAnswered, Closing };
    struct Modal {
        wxDialog* Dialog;
        Act ToDo;
        Stage At = Stage::Opening;
        wxStopWatch Since{};
        int Raised = 0;
    };

    // GTK's file dialog calls this twice.
    int Enter(wxDialog* dialog) override {
        open_.push_back(dialog == Last() ? open_.back() : Modal{dialog, ActFor(dialog)});
        return wxID_NONE;
    }
    void Exit(wxDialog*) override { open_.pop_back(); }

    Act ActFor(wxDialog* dialog) {
        if (auto* box = dynamic_cast<wxMessageDialogBase*>(dialog))
            return [this, box](wxDialog*) { return Answer(box); };
        if (expected_.empty()) return [](wxDialog*) { return false; };
        Act act = expected_.front();
        expected_.pop_front();
        return act;
    }

    // Works only the dialog opened last. The timer keeps running for others that open meanwhile,
    // but pauses between two runs: otherwise handling events would never end.
    void Notify() override {
        StartOnce(Pulse);
        if (open_.empty()) return;
        Modal& last = open_.back();
        if (last.At == Stage::BeingAnswered) {
            if (last.Since.Time() < 5 * Patience) return;
            // A box that wxWidgets does not know blocks it, and nothing here can close that.
            ADD_FAILURE() << "\"" << last.Dialog->GetTitle() << "\" is never answered to the end";
            std::_Exit(EXIT_FAILURE);
        }
        if (last.At == Stage::Opening && native::HasKeyboard(last.Dialog)) {
            last.At = Stage::BeingAnswered;
            Act act = last.ToDo;
            if (!act(last.Dialog)) Close("nobody asked for it");
            open_.back().At = Stage::Closing;
            open_.back().Since.Start();
        } else if (IsOver(last.Since, Patience)) {
            Close(last.At == Stage::Opening ? "it does not get the keyboard" : "it stays open");
            last.Since.Start();
        } else if (last.At == Stage::Opening && last.Since.Time() / RaiseAfter > last.Raised) {
            ++last.Raised;
            last.Dialog->Raise();
        }
    }

    bool Answer(wxMessageDialogBase* box) {
        EXPECT_EQ(box->GetTitle(), "FS2002 Quirkmeter");
        EXPECT_EQ(box->GetMessageDialogStyle() & (wxYES_NO | wxCANCEL), 0);
        long icon = box->GetMessageDialogStyle() & wxICON_MASK;
        EXPECT_TRUE(icon == wxICON_NONE || icon == wxICON_WARNING) << icon;
        EXPECT_EQ(native::ShowsWarning(box), icon == wxICON_WARNING) << "an exclamation mark";
        messages_.push_back((icon == wxICON_WARNING ? "! " : "") + look::Stored(native::Text(box)));
        Meanwhile(box);
        Input().Char(WXK_RETURN);
        return true;
    }

    void Close(const char* why) {
        wxDialog* dialog = Last();
        ADD_FAILURE() << "\"" << dialog->GetTitle() << "\" ("
                      << dialog->GetClassInfo()->GetClassName() << ") is closed by force: " << why;
        if (dialog->IsModal())
            dialog->EndModal(wxID_CANCEL);
        else
            native::Dismiss(dialog);
    }

    std::deque<Act> expected_;
    std::vector<Modal> open_;
    std::vector<std::string> messages_;
};

class WindowTest : public ProgramTest, private wxEventFilter {
   protected:
    WindowTest() {
        wxEvtHandler::AddFilter(this);
        Open();
    }
    ~WindowTest() override {
        Close();
        EXPECT_THAT(modals_.TakeMessages(), IsEmpty());
        EXPECT_FALSE(modals_.Expecting()) << "a dialog did not open";
        wxEvtHandler::RemoveFilter(this);
    }

    void Open() {
        ResetProgramState();
        main_ = new frmMain;
        ASSERT_TRUE(main_->Load());
        main_->Start();
        main_->tmrTimer.Stop();  // the test makes the ticks
        main_->Show();
        main_->Raise();
        AwaitKeyboard();
    }
    void Close() {
        if (!main_) return;
        main_->Close(true);
        main_ = nullptr;
        AwaitEnd();
    }
    /// Waits until the closed main window has ended.
    void AwaitEnd() {
        EXPECT_TRUE(Until([] { return !TheMainWindow; }));
    }

    void Tick() {
        inprocess::AdvanceClock(1);
        EngineTick();
    }

    /// Sets the action for the dialog, then clicks the control that opens it.
    template <typename Dialog>
    void Work(wxWindow* control, const std::function<void(Dialog*)>& act) {
        modals_.WhenOpen(act);
        Click(control);
    }
    auto Cancel() {
        return [this](auto* dialog) { Click(dialog->cmdCancel); };
    }

    void AwaitKeyboard() {
        wxTopLevelWindow* window = main_;
        if (modals_.Last()) window = modals_.Last();
        auto listens = [window] { return native::HasKeyboard(window); };
        for (int i = 0; i < 200 && !Until(listens, RaiseAfter); ++i) window->Raise();
        EXPECT_TRUE(listens()) << window->GetTitle();
    }
    /// Waits until the expected dialogs have opened, and until only that many are open.
    void AwaitDialogs(std::size_t open) {
        EXPECT_TRUE(Until([&] { return !modals_.Expecting() && modals_.Count() <= open; }));
        if (open == 0 && main_) AwaitKeyboard();
    }

    /// Moves the pointer, by a pixel if need be, until the window has received the motion.
    void PointAt(wxWindow* window, wxPoint at) {
        AwaitKeyboard();
        pointedAt_ = nullptr;
        EXPECT_TRUE(Until([&, there = true]() mutable {
            Input().MouseMove(window->ClientToScreen(at) + wxPoint((there = !there), 0));
            return pointedAt_ == wxGetTopLevelParent(window);
        }));
    }
    void Release() {
        auto open = modals_.Count();
        int before = clicks_;
        Input().MouseUp();
        EXPECT_TRUE(Until([&] { return clicks_ > before; }));
        HandleEvents();
        AwaitDialogs(open);
    }
    // Click again if nothing happens: a new window may still move away from the pointer.
    void ClickUntil(wxWindow* window, wxPoint at, const std::function<bool()>& condition) {
        auto click = [&] {
            PointAt(window, at);
            Input().MouseDown();
            Input().MouseUp();
            return Until(condition, 5'000);
        };
        EXPECT_TRUE(click() || click() || click());
    }
    void Click(wxWindow* window, wxPoint at) {
        auto open = modals_.Count();
        int before = clicks_;
        ClickUntil(window, at, [&] { return clicks_ > before; });
        HandleEvents();
        AwaitDialogs(open);
    }
    void Click(wxWindow* control) {
        wxSize size = control->GetSize();
        Click(control, wxPoint(size.x / 2, size.y / 2));
    }
    wxPoint RowPlace(int row) {
        wxRect place;
        main_->lvwSubSystems->EnsureVisible(row - 1);
        main_->lvwSubSystems->GetItemRect(row - 1, place);
        return place.GetPosition() + wxPoint(60, place.height / 2);
    }
    void ClickRow(int row, const std::function<void(frmReliability*)>& act) {
        modals_.WhenOpen(act);
        Click(main_->lvwSubSystems, RowPlace(row));
    }

    void Focus(wxWindow* control) {
        control->SetFocus();
        AwaitFocus(control);
    }
    void AwaitFocus(wxWindow* control) {
        EXPECT_TRUE(Until([&] {
            wxWindow* focus = wxWindow::FindFocus();
            return focus && (focus == control || focus->GetParent() == control);
        })) << control->GetLabel();
    }
    void Key(int key, int modifiers = wxMOD_NONE) {
        auto open = modals_.Count();
        AwaitKeyboard();
        Input().Char(key, modifiers);
        AwaitDialogs(open);
    }
    /// Types into the list in one burst, even on a busy machine: a pause would start a new search.
    void Type(PickList* list, const char* text) {
        Focus(list);
        AwaitKeyboard();
        auto all = characters_ + std::strlen(text);
        Input().Text(text);
        EXPECT_TRUE(Until([&] { return characters_ >= all; }));
    }
    void Open(PickList* list) {
        ClickUntil(list, wxPoint(10, 10), [list] { return list->IsPopupShown(); });
    }

    void ChooseSystem(int system) {
        main_->lstSystems->SetSelection(system - 1);
        wxCommandEvent event(wxEVT_LISTBOX, main_->lstSystems->GetId());
        event.SetEventObject(main_->lstSystems);
        main_->lstSystems->ProcessWindowEvent(event);
    }

    /// The colour of the row's disc and the texts of the row.
    std::string Row(int row) {
        wxListItem disc;
        disc.SetId(row - 1);
        disc.SetMask(wxLIST_MASK_IMAGE);
        main_->lvwSubSystems->GetItem(disc);
        constexpr const char* Discs[] = {"green", "red", "yellow"};
        wxString texts = Discs[disc.GetImage()];
        for (int column = 0; column < 4; ++column)
            texts += (column > 0 ? "|" : "") + main_->lvwSubSystems->GetItemText(row - 1, column);
        return look::Stored(texts);
    }
    long Selected() {
        return main_->lvwSubSystems->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED) + 1;
    }
    static std::string Caption(wxWindow* control) {
        return look::Stored(wxControl::RemoveMnemonics(native::Text(control)));
    }

    frmMain* main_ = nullptr;
    Modals modals_;
    // The place of the last press that the program received.
    wxPoint pressedAt_ = wxDefaultPosition;

   private:
    int FilterEvent(wxEvent& event) override {
        wxEventType type = event.GetEventType();
        // The native list on Windows reports a click instead of the button's release.
        if (type == wxEVT_LEFT_UP || type == wxEVT_COMMAND_LEFT_CLICK) ++clicks_;
        if (type == wxEVT_LEFT_DOWN) pressedAt_ = static_cast<wxMouseEvent&>(event).GetPosition();
        if (type == wxEVT_CHAR) ++characters_;
        if (type == wxEVT_MOTION)
            pointedAt_ = wxGetTopLevelParent(static_cast<wxWindow*>(event.GetEventObject()));
        return Event_Skip;
    }

    // The events that the program received.
    int clicks_ = 0;
    std::size_t characters_ = 0;
    wxWindow* pointedAt_ = nullptr;
};

}  // namespace quirkmeter
