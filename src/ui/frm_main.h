// The main window: the systems, the sub-systems of the chosen one, the buttons and the status line.
#pragma once

#include <wx/button.h>
#include <wx/frame.h>
#include <wx/listbox.h>
#include <wx/listctrl.h>
#include <wx/modalhook.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/timer.h>

#include <chrono>
#include <memory>

#include "model/main_window.h"
#include "ui/frm_reliability.h"

namespace quirkmeter {

class frmMain final : public wxFrame, public MainWindow {
   public:
    frmMain();
    ~frmMain() override;

    /// Start-up as far as the last profile, before the window is shown. False when the program must
    /// end at once, with ExitCode.
    bool Load();
    /// Shows the window, which calls Start once it has been painted.
    void ShowAndStart();
    /// The rest of start-up, once. It connects to the simulator, which takes minutes if that does not
    /// answer.
    void Start();
    /// EXIT_FAILURE when Load could not start the program, for a reason that it has told the user.
    int ExitCode() const { return exitCode_; }

    void RefreshSubsystems() override;
    void SetStatusCaption(const std::string& caption) override;
    void SetSubSystemsHeading(const std::string& heading) override;
    void ShowSubsystemList(bool show) override;
    platform::WindowHandle Handle() const override;
    void Unload() override;
    void ShowMessage(const std::string& text, MessageIcon icon) override;

    wxListBox* lstSystems;
    wxListCtrl* lvwSubSystems;
    wxButton* cmdSetAllRel;
    wxButton* cmdSetSystemRel;
    wxButton* cmdClearFailures;
    wxButton* cmdSaveAs;
    wxButton* cmdOpen;
    wxButton* cmdOptions;
    wxStaticText* lblSubSystems;
    wxStaticBox* Frame1;
    wxStaticText* lblStatus;
    wxTimer tmrTimer;

   private:
    void SayWhyItCannotStart();
    void CreateControls();
    /// Shown instead of the list of sub-systems.
    void CreateHardcoreNotice(const wxRect& place);
    void MakeRoomForSystems();
    void MakeRoomForSubsystems();
    void Grow(wxWindow* list, int extra);
    void BindHandlers();

    void FillSubsystemList();
    void ShowSubsystem(int system, int subsystem);
    void SelectRow(int row);
    void DescribeRow();
    int SelectedSystem() const;
    int SelectedRow() const;
    int RowAt(const wxPoint& place) const;

    void OnSubSystemsDown(wxMouseEvent& event);
    void OnSubSystemsUp(wxMouseEvent& event);
    void OnSubSystemsChar(wxKeyEvent& event);
    void ClickPressedRow();
    void OnSubSystemsClick(int n);
    void OnSetAllRel();
    void OnSetSystemRel();
    bool ChooseProfile(long style);
    void SaveProfile();
    void OpenProfile();
    void OnOptions();
    void OnFirstPaint(wxPaintEvent& event);
    void OnActivate(wxActivateEvent& event);
    void OnTimer();
    void Tick();
    void OnClose();
    void EndFlight();

    void OnReliabilitiesChanged();
    void TestFailure(int system, int subsystem);

    // Counts the open dialogs and message boxes.
    class ModalCount final : public wxModalDialogHook {
       public:
        ModalCount() { Register(); }
        int Open = 0;

       private:
        int Enter(wxDialog*) override {
            ++Open;
            return wxID_NONE;
        }
        void Exit(wxDialog*) override { --Open; }
    };

    ModalCount modals_;
    wxWindow* panel_;
    wxWindow* notice_;
    std::unique_ptr<wxStaticBoxSizer> statusSizer_;
    enum class Phase { Starting, Loading, Loaded, Ticking, Closing };  // Loading: settings are read
    Phase phase_ = Phase::Starting;
    std::chrono::steady_clock::time_point nextTick_;  // when that is or was due
    int exitCode_ = EXIT_SUCCESS;
    bool displayIsLost_ = false;
    int LastClickedItem = 0;
    int pressedRow_ = 0;  // under the mouse button, or chosen by key, and not yet opened; 0: none
    wxString cdlDialogPath_;  // the file chosen last in this run; at first the program's folder
};

}  // namespace quirkmeter
