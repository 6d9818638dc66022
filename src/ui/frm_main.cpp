#include "ui/frm_main.h"

#include <wx/display.h>
#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/panel.h>
#include <wx/stockitem.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <utility>

#include "engine/connection.h"
#include "engine/tick.h"
#include "hardcore/companion.h"
#include "link/actuation.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/failure_range.h"
#include "model/number_text.h"
#include "persist/profile.h"
#include "persist/settings_file.h"
#include "platform/platform.h"
#include "ui/frm_options.h"
#include "ui/look.h"

namespace quirkmeter {

namespace {

// The empty pattern in front keeps wxWidgets from giving a name an extension.
constexpr char ProfileFilter[] = "FS2002 Quirkmeter Profile (*.qmp)|;*.qmp";

// The shortest pause between two ticks, in which the window is painted and events are handled.
constexpr std::chrono::milliseconds Rest{250};

enum RowIcon { GreenIcon, RedIcon, YellowIcon };
enum Column { ComponentColumn, ReliabilityColumn, BasedOnColumn, FailedColumn };

RowIcon IconOf(const SubsystemEntry& entry) {
    if (entry.Failed) return RedIcon;
    return entry.Reliability == "100" ? GreenIcon : YellowIcon;
}

std::string BasedOnText(const SubsystemEntry& entry) {
    return entry.Hours.Text() + (entry.Hours == "1" ? " hour" : " hours") + " of flight";
}

const char* FailedText(const SubsystemEntry& entry) {
    if (entry.Failed) return "Yes";
    return entry.Reliability == "100" ? "Never" : "No";
}

ReliabilityEdit EditOf(const SubsystemEntry& entry) {
    return {.EditReliability = static_cast<float>(entry.Reliability.ValueOr(100)),
            .EditHours = static_cast<float>(entry.Hours.ValueOr(1))};
}

void ApplyEdit(SubsystemEntry& entry, const ReliabilityEdit& edit) {
    entry.Reliability = NumberText(edit.EditReliability);
    entry.Hours = NumberText(edit.EditHours);
}

}  // namespace

frmMain::frmMain()
    : wxFrame(nullptr, wxID_ANY, ProgramTitle, wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE & ~(wxRESIZE_BORDER | wxMAXIMIZE_BOX)),
      tmrTimer(this),
      cdlDialogPath_(look::Shown(platform::ProgramFile("\\"))) {
    TheMainWindow = this;
    SetIcons(look::ProgramIcons());
    CreateControls();
    BindHandlers();
}

frmMain::~frmMain() {
    platform::WhenDisplayIsLost([] {});
    if (TheMainWindow == this) TheMainWindow = nullptr;
}

bool frmMain::Load() {
    platform::TerminationRequested();  // installs the signal handlers
    platform::WhenDisplayIsLost([this] {
        displayIsLost_ = true;
        EndFlight();
    });
    tmrTimer.StartOnce(TickMilliseconds);  // ends the program while a message is open
    auto claim = platform::ClaimSingleInstance("Quirkmeter");
    if (claim == platform::InstanceClaim::Failed) SayWhyItCannotStart();
    if (claim != platform::InstanceClaim::Claimed) return false;
    if (!ReadSettings()) return false;
    phase_ = Phase::Loading;
    BuildCatalogue();
    for (int s = 1; s < static_cast<int>(std::size(SystemTitles)); ++s)
        lstSystems->Append(wxString(SystemTitles[s].data(), SystemTitles[s].size()));
    MakeRoomForSystems();
    lstSystems->SetSelection(0);
    FillSubsystemList();
    MakeRoomForSubsystems();  // of the autopilot, which has the most
    if (!Settings.LastProfile.empty()) ReadProfile();
    lstSystems->SetFocus();
    phase_ = Phase::Loaded;
    return true;
}

void frmMain::ShowAndStart() {
    panel_->Bind(wxEVT_PAINT, &frmMain::OnFirstPaint, this);
    Show();
}

void frmMain::OnFirstPaint(wxPaintEvent& event) {
    event.Skip();
    panel_->Unbind(wxEVT_PAINT, &frmMain::OnFirstPaint, this);
    CallAfter(&frmMain::Start);
}

void frmMain::Start() {
    if (phase_ != Phase::Loaded) return;
    ConnectToSimulator(false);
    ComputeFailureRanges();
    phase_ = Phase::Ticking;
    nextTick_ = std::chrono::steady_clock::now();
    Tick();
}

void frmMain::SayWhyItCannotStart() {
    std::string text = std::string(ProgramTitle) + " cannot start. " + platform::LastErrorText();
    if (platform::TerminationRequested()) return;  // which ended the wait
    exitCode_ = EXIT_FAILURE;
    if (platform::OnTerminal(2)) std::cerr << text << std::endl;
    ShowMessage(text, MessageIcon::None);
}

void frmMain::CreateControls() {
    SetClientSize(look::Twips(this, 6735, 7335));
    panel_ = new wxPanel(this);
    panel_->SetSize(GetClientSize());
    panel_->SetBackgroundColour(look::Grey);
    panel_->SetFont(look::Text());

    auto heading = [this](const char* text, int left, int top, int width) {
        wxRect place = look::Twips(panel_, left, top, width, 240);
        auto* label = new wxStaticText(panel_, wxID_ANY, text, place.GetPosition(), place.GetSize(),
                                       wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END);
        look::MakeRoomForText(label);
        label->SetForegroundColour(look::White);
        return label;
    };
    auto button = [this](const char* caption, int left, int top, int width) {
        wxRect place = look::Twips(panel_, left, top, width, 375);
        return new wxButton(panel_, wxID_ANY, caption, place.GetPosition(), place.GetSize(),
                            wxBU_EXACTFIT);
    };

    // In tab order. The second heading is as wide as its list, since it names the profile.
    // Screen readers on Windows take the label made before a list for its name.
    heading("Systems", 120, 120, 735);
    wxRect place = look::Twips(panel_, 120, 360, 1695, 1635);
    lstSystems = new wxListBox(panel_, wxID_ANY, place.GetPosition(), place.GetSize());
    look::PaintGreen(lstSystems);
    look::Describe(lstSystems, platform::ControlKind::Native, "Systems");

    place = look::Twips(panel_, 120, 2400, 6495, 3975);
    CreateHardcoreNotice(place);
    lblSubSystems = heading("Sub-systems", 120, 2160, 6495);
    lvwSubSystems = new wxListCtrl(panel_, wxID_ANY, place.GetPosition(), place.GetSize(),
                                   wxLC_REPORT | wxLC_SINGLE_SEL);
    // The theme would leave a selected row its bright green on a pale ground.
    lvwSubSystems->EnableSystemTheme(false);
    look::PaintGreen(lvwSubSystems);
    lvwSubSystems->SetTextColour(look::BrightGreen);
    wxVector<wxBitmapBundle> imgList;
    for (const wxColour& colour : {look::BrightGreen, look::Red, look::Yellow})
        imgList.push_back(look::Disc(colour));
    lvwSubSystems->SetSmallImages(imgList);
    std::pair<const char*, int> columns[] = {
        {"Component", 2200}, {"Reliability", 1100}, {"Based on", 2200}, {"Failed", 800}};
    for (auto [title, width] : columns)
        lvwSubSystems->AppendColumn(title, wxLIST_FORMAT_LEFT,
                                    look::Twips(panel_, width, 0).GetWidth());

    cmdSetAllRel = button("Set &All Reliabilities", 2040, 360, 2775);
    cmdSetSystemRel = button("Set System &Reliabilities", 2040, 960, 2775);
    cmdClearFailures = button("&Clear All Failures", 2040, 1560, 2775);
    cmdSaveAs = button("&Save Profile", 5040, 360, 1575);
    cmdOpen = button("&Open Profile", 5040, 960, 1575);
    cmdOptions = button("O&ptions", 5040, 1560, 1575);

    place = look::Twips(panel_, 120, 6600, 6495, 615);
    // On Windows the background behind a static box shows between its line and its contents.
    auto* ground = new wxPanel(panel_, wxID_ANY, place.GetPosition(), place.GetSize());
    ground->SetBackgroundColour(look::DarkGreen);
    Frame1 = new wxStaticBox(ground, wxID_ANY, "Status");
    Frame1->SetBackgroundColour(look::DarkGreen);
    Frame1->SetForegroundColour(look::White);
    lblStatus = new wxStaticText(Frame1, wxID_ANY, "Status", wxDefaultPosition, wxDefaultSize,
                                 wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END);
    look::PaintGreen(lblStatus);
    // The inside of a static box begins in a different place on each system; the sizer knows it.
    statusSizer_.reset(new wxStaticBoxSizer(Frame1, wxVERTICAL));
    statusSizer_->Add(lblStatus, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT, FromDIP(8)));
    // At the very edge, the first letter of the title would be cut off.
    wxRect inside = wxRect(place.GetSize()).Deflate(FromDIP(2));
    statusSizer_->SetDimension(inside.GetPosition(), inside.GetSize());
}

// Enlarges the lists where the system's rows are taller than the layout allows for, so that all
// seven systems and all sub-systems of the selected one show.
void frmMain::MakeRoomForSystems() {
    int extra = lstSystems->GetBestSize().GetHeight() - lstSystems->GetSize().GetHeight();
    if (extra <= 0) return;
    // The estimate leaves out the lines between the rows.
    Grow(lstSystems, extra + FromDIP(2) * static_cast<int>(lstSystems->GetCount() + 1));
}

void frmMain::MakeRoomForSubsystems() {
    wxRect lastRow;
    lvwSubSystems->GetItemRect(lvwSubSystems->GetItemCount() - 1, lastRow);
    int extra = lastRow.GetBottom() + FromDIP(2) - lvwSubSystems->GetSize().GetHeight();
    int room = wxDisplay(this).GetClientArea().GetHeight() - GetSize().GetHeight();
    Grow(lvwSubSystems, std::clamp(extra, 0, std::max(room, 0)));
}

// Moves the controls below the list down.
void frmMain::Grow(wxWindow* list, int extra) {
    int bottom = list->GetRect().GetBottom();
    for (wxWindow* child : panel_->GetChildren())
        if (child->GetPosition().y > bottom) child->Move(child->GetPosition() + wxPoint(0, extra));
    list->SetSize(list->GetSize() + wxSize(0, extra));
    SetClientSize(GetClientSize() + wxSize(0, extra));
}

void frmMain::CreateHardcoreNotice(const wxRect& place) {
    struct Line {
        const char* Text;
        int Left, Top, Width, Height;
    };
    constexpr Line Lines[] = {
        {"Hardcore Mode ON.", 2160, 2760, 3255, 375},
        {"The following options are not available while airborne:", 240, 3360, 6375, 375},
        {"Sub-systems display", 2400, 3840, 2895, 255},
        {"Reliability setting", 2400, 4200, 2895, 255},
        {"Failure clearing", 2400, 4560, 2775, 255},
        {"Failure displaying", 2400, 4920, 2775, 255},
        {"Profile opening", 2400, 5280, 2895, 255},
        {"Deactivating", 2400, 5640, 2895, 255},
    };
    notice_ = new wxPanel(panel_, wxID_ANY, place.GetPosition(), place.GetSize());
    notice_->Hide();
    for (const Line& line : Lines) {
        wxRect at = look::Twips(panel_, line.Left, line.Top, line.Width, line.Height);
        auto* label =
            new wxStaticText(notice_, wxID_ANY, line.Text, at.GetPosition() - place.GetPosition(),
                             at.GetSize(), wxST_NO_AUTORESIZE);
        label->SetForegroundColour(look::DarkGreen);
        label->SetFont(line.Height == 375 ? look::Large() : look::Bold());
        label->Wrap(place.GetRight() - at.x);  // in a font wider than the layout's
        look::MakeRoomForText(label);
    }
}

void frmMain::BindHandlers() {
    look::FollowDisplayScale(this);
    lstSystems->Bind(wxEVT_LISTBOX, [this](wxCommandEvent&) {
        FillSubsystemList();
        lvwSubSystems->EnsureVisible(0);
    });
    lvwSubSystems->Bind(wxEVT_LIST_ITEM_SELECTED, [this](wxListEvent&) { DescribeRow(); });
    lvwSubSystems->Bind(wxEVT_LEFT_DOWN, &frmMain::OnSubSystemsDown, this);
    lvwSubSystems->Bind(wxEVT_LEFT_UP, &frmMain::OnSubSystemsUp, this);
    // The native list reports a click instead of the button's release.
    lvwSubSystems->Bind(wxEVT_COMMAND_LEFT_CLICK, [this](wxCommandEvent&) { ClickPressedRow(); });
    lvwSubSystems->Bind(wxEVT_RIGHT_DOWN, [](wxMouseEvent&) {});  // would only deselect
    lvwSubSystems->Bind(wxEVT_CHAR, &frmMain::OnSubSystemsChar, this);
    auto onClick = [](wxButton* button, auto handler) {
        button->Bind(wxEVT_BUTTON, [handler](wxCommandEvent&) { handler(); });
    };
    onClick(cmdSetAllRel, [this] { OnSetAllRel(); });
    onClick(cmdSetSystemRel, [this] { OnSetSystemRel(); });
    onClick(cmdClearFailures, [] { ClearAllFailures(false); });
    onClick(cmdSaveAs, [this] { SaveProfile(); });
    onClick(cmdOpen, [this] { OpenProfile(); });
    onClick(cmdOptions, [this] { OnOptions(); });
    Bind(wxEVT_ACTIVATE, &frmMain::OnActivate, this);
    Bind(wxEVT_TIMER, [this](wxTimerEvent&) { OnTimer(); });
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) { OnClose(); });
}

// --- The lists --------------------------------------------------------------------------------

int frmMain::SelectedSystem() const {
    return lstSystems->GetSelection() + 1;
}

int frmMain::SelectedRow() const {
    return static_cast<int>(
               lvwSubSystems->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) +
           1;
}

int frmMain::RowAt(const wxPoint& place) const {
    int flags = 0;
    return static_cast<int>(lvwSubSystems->HitTest(place, flags)) + 1;
}

void frmMain::SelectRow(int row) {
    constexpr long State = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;
    lvwSubSystems->SetItemState(row - 1, State, State);
}

// Update rows in place, and only where they differ, so that nothing flickers or scrolls.
void frmMain::FillSubsystemList() {
    int system = SelectedSystem();
    int rows = SubsystemCount(system);
    lvwSubSystems->Freeze();
    while (lvwSubSystems->GetItemCount() > rows)
        lvwSubSystems->DeleteItem(lvwSubSystems->GetItemCount() - 1);
    while (lvwSubSystems->GetItemCount() < rows)
        lvwSubSystems->InsertItem(lvwSubSystems->GetItemCount(), wxEmptyString);
    for (int n = 1; n <= rows; ++n) ShowSubsystem(system, n);
    SelectRow(1);
    lvwSubSystems->Thaw();
    cmdSetSystemRel->SetLabel("Set" + lstSystems->GetStringSelection() + " &Reliabilities");
    DescribeRow();
}

// Describes the selected row to screen readers, with the titles of its columns.
void frmMain::DescribeRow() {
    long row = SelectedRow() - 1;
    if (row < 0) return;
    wxString shown = lvwSubSystems->GetItemText(row).Trim(false);
    for (int column = ReliabilityColumn; column <= FailedColumn; ++column) {
        wxListItem title;
        title.SetMask(wxLIST_MASK_TEXT);
        lvwSubSystems->GetColumn(column, title);
        shown += ", " + title.GetText() + " " + lvwSubSystems->GetItemText(row, column);
    }
    look::Describe(lvwSubSystems, platform::ControlKind::List, "Sub-systems", shown);
}

void frmMain::ShowSubsystem(int system, int subsystem) {
    const SubsystemEntry& entry = Catalogue[system][subsystem];
    long row = subsystem - 1;
    wxListItem shown;
    shown.SetId(row);
    shown.SetMask(wxLIST_MASK_IMAGE);
    lvwSubSystems->GetItem(shown);
    if (shown.GetImage() != IconOf(entry)) lvwSubSystems->SetItemImage(row, IconOf(entry));
    std::pair<Column, std::string> texts[] = {{ComponentColumn, " " + std::string(entry.Name)},
                                              {ReliabilityColumn, entry.Reliability.Text() + "%"},
                                              {BasedOnColumn, BasedOnText(entry)},
                                              {FailedColumn, FailedText(entry)}};
    for (const auto& [column, text] : texts)
        if (lvwSubSystems->GetItemText(row, column) != text)
            lvwSubSystems->SetItem(row, column, look::Shown(text));
}

void frmMain::RefreshSubsystems() {
    FillSubsystemList();
    if (LastClickedItem >= 2 && LastClickedItem <= lvwSubSystems->GetItemCount())
        SelectRow(LastClickedItem);
}

// A click is a press and a release on the same row. Ignore a press below the rows: it would
// deselect the row and leave the keyboard without one.
void frmMain::OnSubSystemsDown(wxMouseEvent& event) {
    pressedRow_ = RowAt(event.GetPosition());
    event.Skip(pressedRow_ > 0);
    if (pressedRow_ == 0) lvwSubSystems->SetFocus();
}

void frmMain::OnSubSystemsUp(wxMouseEvent& event) {
    event.Skip();
    if (RowAt(event.GetPosition()) != pressedRow_) pressedRow_ = 0;
    ClickPressedRow();
}

void frmMain::OnSubSystemsChar(wxKeyEvent& event) {
    int key = event.GetKeyCode();
    if (key != WXK_RETURN && key != WXK_NUMPAD_ENTER && key != WXK_SPACE) {
        event.Skip();
        return;
    }
    pressedRow_ = SelectedRow();
    ClickPressedRow();
}

// Open the dialog after the list has handled the click itself. The native list can report one click
// twice; open one dialog, for the row that was pressed: a tick may have deselected it.
void frmMain::ClickPressedRow() {
    CallAfter([this] {
        if (pressedRow_ > 0) OnSubSystemsClick(std::exchange(pressedRow_, 0));
    });
}

void frmMain::OnSubSystemsClick(int n) {
    LastClickedItem = n;
    SelectRow(n);
    int s = SelectedSystem();
    SubsystemEntry& entry = Catalogue[s][n];
    ReliabilityEdit edit = EditOf(entry);
    frmReliability dialog(this,
                          lstSystems->GetStringSelection() + " -" +
                              lvwSubSystems->GetItemText(n - 1) + " Reliability",
                          true, edit);
    dialog.ShowModal();

    // Ticks ran meanwhile: the entry may have failed, or its failure ended.
    if (edit.EditTest) TestFailure(s, n);
    if (edit.EditClear) {
        ClearFailure(s, n);
        RefreshSubsystems();
    }
    if (edit.EditAccepted) {
        ApplyEdit(entry, edit);
        OnReliabilitiesChanged();
    }
}

void frmMain::OnReliabilitiesChanged() {
    ComputeFailureRanges();
    RefreshSubsystems();
}

void frmMain::TestFailure(int system, int subsystem) {
    if (!EngineState.Connected) {
        ShowMessage(
            "You'll need to have Flight Simulator 2002 running first and you'll also need the "
            "fsuipc module installed.",
            MessageIcon::None);
        return;
    }
    if (!Catalogue[system][subsystem].Failed) AddFailure(system, subsystem);
    RefreshSubsystems();
}

// --- The buttons ------------------------------------------------------------------------------

void frmMain::OnSetAllRel() {
    if (HardcoreLock()) return;
    ReliabilityEdit edit{.EditReliability = 100, .EditHours = 1};
    frmReliability dialog(this, "All Reliabilities", false, edit);
    dialog.ShowModal();
    if (!edit.EditAccepted) return;
    ForEachSubsystem([&edit](int, int, SubsystemEntry& entry) { ApplyEdit(entry, edit); });
    OnReliabilitiesChanged();
}

void frmMain::OnSetSystemRel() {
    if (HardcoreLock()) return;
    int s = SelectedSystem();
    ReliabilityEdit edit = EditOf(Catalogue[s][1]);
    frmReliability dialog(this, lstSystems->GetStringSelection() + " Reliabilities", false, edit);
    dialog.ShowModal();
    if (!edit.EditAccepted) return;
    for (int n = 1; n <= SubsystemCount(s); ++n) ApplyEdit(Catalogue[s][n], edit);
    OnReliabilitiesChanged();
}

bool frmMain::ChooseProfile(long style) {
    wxFileName last(cdlDialogPath_);
    bool save = style == wxFD_SAVE;
    wxFileDialog cdlDialog(this, wxEmptyString, last.GetPath(), wxEmptyString, ProfileFilter,
                           style);
    // For a system that leaves the title to the program; elsewhere it has no effect.
    cdlDialog.SetTitle(wxGetStockLabel(save ? wxID_SAVEAS : wxID_OPEN, wxSTOCK_WITHOUT_ELLIPSIS));
    // A name given before the filter would get the filter's extension.
    if (last.HasName()) cdlDialog.SetFilename(last.GetFullName());
    if (cdlDialog.ShowModal() != wxID_OK) return false;
    wxString path = cdlDialog.GetPath();
    if (!platform::HoldsPath(path.ToStdWstring())) {
        look::ShowMessage(this, (save ? "Could not write " : "Could not read ") + path,
                          MessageIcon::Warning);
        return false;
    }
    cdlDialogPath_ = path;
    Settings.LastProfile = look::Stored(path);
    return true;
}

void frmMain::SaveProfile() {
    if (ChooseProfile(wxFD_SAVE)) WriteProfile();
}

void frmMain::OpenProfile() {
    if (HardcoreLock()) return;
    if (ChooseProfile(wxFD_OPEN)) ReadProfile();
}

void frmMain::OnOptions() {
    frmOptions dialog(this);
    dialog.SetVersion(
        wxString::Format("FSQM Version %d.%d", QUIRKMETER_VERSION_MAJOR, QUIRKMETER_VERSION_MINOR));
    dialog.ShowModal();
    Raise();  // with two dialogs closed at once, openbox turns to another program's window
}

// --- Called by the rooms below ----------------------------------------------------------------

void frmMain::SetStatusCaption(const std::string& caption) {
    lblStatus->SetLabelText(look::Shown(caption));
    lblStatus->SetToolTip(look::Shown(caption));
}

void frmMain::SetSubSystemsHeading(const std::string& heading) {
    lblSubSystems->SetLabelText(look::Shown(heading));
}

void frmMain::ShowSubsystemList(bool show) {
    if (lvwSubSystems->IsShown() == show) return;
    lvwSubSystems->Show(show);
    notice_->Show(!show);
}

void frmMain::ShowMessage(const std::string& text, MessageIcon icon) {
    if (!displayIsLost_) look::ShowMessage(this, look::Shown(text), icon);
}

// If the focused list was hidden meanwhile, nothing has the focus: give it to the systems list.
void frmMain::OnActivate(wxActivateEvent& event) {
    event.Skip();
    if (!event.GetActive() || lvwSubSystems->IsShown()) return;
    CallAfter([this] {
        wxWindow* focus = FindFocus();
        if (!focus || focus == this || focus == panel_) lstSystems->SetFocus();
    });
}

void frmMain::OnTimer() {
    if (platform::TerminationRequested()) {
        tmrTimer.StartOnce(TickMilliseconds / 2);  // a message of the closing sequence
        Close(true);
        return;
    }
    tmrTimer.StartOnce(TickMilliseconds);
    // GTK runs timers before it paints, and idle handlers afterwards. A window that starts minimised
    // is never painted.
    CallAfter(phase_ == Phase::Ticking ? &frmMain::Tick : &frmMain::Start);
}

// Schedule ticks at whole seconds, however long each takes. A tick of more than a second delays the
// next one.
void frmMain::Tick() {
    using namespace std::chrono;
    if (phase_ == Phase::Ticking) EngineTick();
    if (phase_ == Phase::Closing) return;
    auto now = steady_clock::now();
    nextTick_ = std::max(nextTick_ + milliseconds(TickMilliseconds), now + Rest);
    tmrTimer.StartOnce(static_cast<int>(ceil<milliseconds>(nextTick_ - now).count()));
}

platform::WindowHandle frmMain::Handle() const {
    return reinterpret_cast<platform::WindowHandle>(GetHandle());
}

void frmMain::Unload() {
    Close(true);
}

void frmMain::OnClose() {
    EndFlight();
    // An open dialog runs its own event loop, which would continue without this window. Everything
    // is saved, so exit here.
    if (modals_.Open > 0) std::_Exit(EXIT_SUCCESS);
    Destroy();
}

// Save once, and only if the settings have been read.
void frmMain::EndFlight() {
    Phase ended = std::exchange(phase_, Phase::Closing);
    if (ended == Phase::Starting || ended == Phase::Closing) return;
    LeaveFlight();
    WriteSettings();
}

}  // namespace quirkmeter
