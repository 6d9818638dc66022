#include "rehearse/window.h"

#include <wx/dnd.h>
#include <wx/filename.h>
#include <wx/progdlg.h>
#include <wx/spinctrl.h>
#include <wx/wupdlock.h>
#include <wx/wx.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "persist/profile.h"
#include "platform/platform.h"
#include "rehearse/exact.h"
#include "rehearse/files.h"
#include "rehearse/page_file.h"
#include "rehearse/print.h"
#include "rehearse/rehearsal.h"
#include "rehearse/report.h"
#include "rehearse/wish.h"
#include "ui/look.h"

namespace quirkmeter::rehearse {

namespace {

constexpr char Title[] = "FS2002 Quirkmeter - Rehearsal";
constexpr char ProfileFiles[] = "FS2002 Quirkmeter Profile (*.qmp)|*.qmp";
constexpr std::size_t LikeliestShown = 5;

// By the systems' numbers, with the access key of each box.
const char* const SystemLabels[] = {"&Autopilot", "Con&trol",    "&Electrical", "Eng&ine",
                                    "&Fuel",      "Instru&ment", "Ra&dio"};

class RehearsalFrame final : public wxFrame {
   public:
    RehearsalFrame();

    /// Shows the profile. If it cannot be read, shows a message and keeps the current profile.
    void Open(const std::string& path);

   private:
    wxSizer* MakePlan();
    wxSizer* MakeForecast();
    wxSizer* MakeWish();
    wxSizer* MakeButtons();

    void ApplyWish();
    void ShowForecast();
    std::optional<Report> RehearseWithProgress();
    void Warn(const std::string& text);
    void OnWish(double percent);
    void OnChoose();
    void OnRehearse();
    void OnSave();

    std::string profile_;                  // its path; empty: none is open
    std::vector<SubsystemEntry> entries_;  // as the file has them
    FlightPlan plan_;
    std::optional<double> wish_;  // percent of flights in which nothing fails; nothing: as it is

    wxPanel* panel_;
    wxStaticText* name_;
    wxSpinCtrlDouble* hours_;
    wxSpinCtrl* engines_;
    wxStaticText* nothingFails_;
    wxStaticText* failures_;
    std::vector<wxStaticText*> likeliest_, chances_;
    wxSlider* slider_;
    wxSpinCtrlDouble* percent_;
    std::vector<wxCheckBox*> systems_;
    wxStaticText* note_;
};

class DropTarget final : public wxFileDropTarget {
   public:
    explicit DropTarget(RehearsalFrame& frame) : frame_(frame) {}

    // Return at once: the program that the file comes from waits for this.
    bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& files) override {
        frame_.CallAfter(&RehearsalFrame::Open, look::Stored(files.front()));
        return true;
    }

   private:
    RehearsalFrame& frame_;
};

RehearsalFrame::RehearsalFrame() : wxFrame(nullptr, wxID_ANY, Title), panel_(new wxPanel(this)) {
    SetIcons(look::ProgramIcons());
    auto* column = new wxBoxSizer(wxVERTICAL);
    for (wxSizer* part : {MakePlan(), MakeForecast(), MakeWish()})
        column->Add(part, wxSizerFlags().Expand().Border(wxALL & ~wxBOTTOM));
    note_ =
        new wxStaticText(panel_, wxID_ANY, "Choose a profile, or drop one here.", wxDefaultPosition,
                         wxDefaultSize, wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE);
    column->Add(note_, wxSizerFlags().Expand().Border());
    column->AddStretchSpacer();
    column->Add(MakeButtons(), wxSizerFlags().Expand().Border());
    panel_->SetSizer(column);
    auto* frame = new wxBoxSizer(wxVERTICAL);
    frame->Add(panel_, wxSizerFlags(1).Expand());
    SetSizerAndFit(frame);

    // On GTK the access key of a label does not reach its field.
    std::vector<wxAcceleratorEntry> letters;
    auto reach = [&](wxWindow* field, char letter) {
        int id = NewControlId();  // on Windows the field would receive its own id
        letters.emplace_back(wxACCEL_ALT, letter, id);
        Bind(
            wxEVT_MENU, [field](wxCommandEvent&) { field->SetFocus(); }, id);
    };
    reach(hours_, 'H');
    reach(engines_, 'G');
    reach(slider_, 'N');
    reach(percent_, 'P');
    SetAcceleratorTable({static_cast<int>(letters.size()), letters.data()});
    SetDropTarget(new DropTarget(*this));
}

// GTK and Windows take the label, which is created before the field, for the field's name.
void AddLabelled(wxSizer* row, wxStaticText* label, wxWindow* field) {
    row->Add(label, wxSizerFlags().CentreVertical().Border(wxRIGHT));
    row->Add(field, wxSizerFlags().CentreVertical().DoubleBorder(wxRIGHT));
}

wxSizer* RehearsalFrame::MakePlan() {
    auto* rows = new wxBoxSizer(wxVERTICAL);
    auto* profile = new wxBoxSizer(wxHORIZONTAL);
    auto* choose = new wxButton(panel_, wxID_ANY, "&Choose...");
    name_ = new wxStaticText(panel_, wxID_ANY, "No profile", wxDefaultPosition, wxDefaultSize,
                             wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE);
    name_->SetFont(GetFont().Bold());
    profile->Add(name_, wxSizerFlags(1).CentreVertical());
    profile->Add(choose, wxSizerFlags().CentreVertical());
    rows->Add(profile, wxSizerFlags().Expand().Border(wxBOTTOM));

    auto* plan = new wxBoxSizer(wxHORIZONTAL);
    auto* hours = new wxStaticText(panel_, wxID_ANY, "&Hours of flight");
    hours_ = new wxSpinCtrlDouble(panel_, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                  wxSP_ARROW_KEYS, 0.01, 1000, plan_.Hours, 0.5);
    hours_->SetDigits(2);
    AddLabelled(plan, hours, hours_);
    auto* engines = new wxStaticText(panel_, wxID_ANY, "En&gines");
    engines_ = new wxSpinCtrl(panel_, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                              wxSP_ARROW_KEYS, 0, 4, static_cast<int>(plan_.Engines));
    AddLabelled(plan, engines, engines_);
    rows->Add(plan);

    choose->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnChoose(); });
    hours_->Bind(wxEVT_SPINCTRLDOUBLE, [this](wxSpinDoubleEvent&) { ApplyWish(); });
    engines_->Bind(wxEVT_SPINCTRL, [this](wxSpinEvent&) { ApplyWish(); });
    return rows;
}

wxSizer* RehearsalFrame::MakeForecast() {
    auto* box = new wxStaticBoxSizer(wxVERTICAL, panel_, "By calculation");
    auto* table = new wxFlexGridSizer(2, FromDIP(wxSize(16, 2)));
    table->AddGrowableCol(0);
    auto row = [&](const char* what, std::vector<wxStaticText*>* names) {
        auto* name = new wxStaticText(box->GetStaticBox(), wxID_ANY, what);
        auto* value = new wxStaticText(box->GetStaticBox(), wxID_ANY, "");
        table->Add(name, wxSizerFlags().Expand());
        table->Add(value, wxSizerFlags().Right());
        if (names) names->push_back(name);
        return value;
    };
    nothingFails_ = row("Flights in which nothing fails", nullptr);
    failures_ = row("Failures in a flight", nullptr);
    row("Likeliest to fail:", nullptr);
    while (chances_.size() < LikeliestShown) chances_.push_back(row("", &likeliest_));
    box->Add(table, wxSizerFlags().Expand().Border());
    return box;
}

wxSizer* RehearsalFrame::MakeWish() {
    auto* box = new wxStaticBoxSizer(wxVERTICAL, panel_, "A profile of your own");
    wxWindow* parent = box->GetStaticBox();
    auto* wish = new wxBoxSizer(wxHORIZONTAL);
    wish->Add(new wxStaticText(parent, wxID_ANY, "&Nothing fails in"),
              wxSizerFlags().CentreVertical().Border(wxRIGHT));
    slider_ = new wxSlider(parent, wxID_ANY, 0, 0, 100, wxDefaultPosition,
                           wxSize(FromDIP(160), wxDefaultCoord));
    wish->Add(slider_, wxSizerFlags(1).CentreVertical().Border(wxRIGHT));
    auto* percent = new wxStaticText(parent, wxID_ANY, "&percent of flights");
    percent_ = new wxSpinCtrlDouble(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                    wxSP_ARROW_KEYS, 0, 100, 0, 0.5);
    percent_->SetDigits(1);
    wish->Add(percent_, wxSizerFlags().CentreVertical().Border(wxRIGHT));
    wish->Add(percent, wxSizerFlags().CentreVertical());
    box->Add(wish, wxSizerFlags().Expand().Border());

    auto* systems = new wxFlexGridSizer(4, FromDIP(wxSize(12, 2)));
    for (const char* label : SystemLabels) {
        systems_.push_back(new wxCheckBox(parent, wxID_ANY, label));
        systems_.back()->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { ApplyWish(); });
        systems_.back()->Disable();
        systems->Add(systems_.back());
    }
    box->Add(new wxStaticText(parent, wxID_ANY, "Systems that may fail:"),
             wxSizerFlags().Border(wxLEFT | wxRIGHT));
    box->Add(systems, wxSizerFlags().Border());

    slider_->Bind(wxEVT_SLIDER, [this](wxCommandEvent&) { OnWish(slider_->GetValue()); });
    percent_->Bind(wxEVT_SPINCTRLDOUBLE,
                   [this](wxSpinDoubleEvent&) { OnWish(percent_->GetValue()); });
    return box;
}

wxSizer* RehearsalFrame::MakeButtons() {
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    auto* save = new wxButton(panel_, wxID_SAVEAS, "&Save as...");
    auto* rehearse = new wxButton(panel_, wxID_ANY, "&Rehearse");
    rehearse->SetDefault();
    row->AddStretchSpacer();
    row->Add(save, wxSizerFlags().Border(wxRIGHT));
    row->Add(rehearse);
    rehearse->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnRehearse(); });
    save->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { OnSave(); });
    for (wxWindow* control : std::initializer_list<wxWindow*>{rehearse, save, slider_, percent_})
        control->Bind(wxEVT_UPDATE_UI,
                      [this](wxUpdateUIEvent& event) { event.Enable(!profile_.empty()); });
    return row;
}

void RehearsalFrame::Warn(const std::string& text) {
    look::ShowMessage(this, look::Shown(text), MessageIcon::Warning);
}

void RehearsalFrame::Open(const std::string& path) {
    if (auto fault = LoadProfile(path)) {
        ApplyWish();
        return Warn(*fault);
    }
    profile_ = path;
    wish_.reset();
    entries_.clear();
    SystemSet failing;
    ForEachSubsystem([&](int s, int, const SubsystemEntry& entry) {
        entries_.push_back(entry);
        if (ReliabilityOf(entry) < 100) failing.set(static_cast<std::size_t>(s));
    });
    for (std::size_t box = 0; box < systems_.size(); ++box) {
        systems_[box]->SetValue(failing[box + 1]);
        systems_[box]->Enable(failing[box + 1]);
    }
    name_->SetLabelText(look::Shown(platform::FileName(path)));
    name_->SetToolTip(look::Shown(path));
    ApplyWish();
}

// Applies the window's plan, systems and wish to the profile of the file, in the catalogue.
void RehearsalFrame::ApplyWish() {
    plan_.Hours = hours_->GetValue();
    plan_.Engines = engines_->GetValue();
    if (profile_.empty()) return;
    auto stored = entries_.begin();
    ForEachSubsystem([&](int, int, SubsystemEntry& entry) { entry = *stored++; });
    SystemSet kept;
    for (std::size_t box = 0; box < systems_.size(); ++box)
        kept.set(box + 1, systems_[box]->GetValue());
    KeepOnly(kept);
    bool met = !wish_ || MeetWish(*wish_, plan_).empty();
    note_->SetLabelText(met ? "" : "This wish cannot be met. The figures above are the nearest.");
    ShowForecast();
}

void RehearsalFrame::ShowForecast() {
    wxWindowUpdateLocker oneRedraw(this);
    double nothingFails = ExactChanceOfNoFailure(plan_);
    if (!wish_) {
        slider_->SetValue(static_cast<int>(std::lround(nothingFails * 100)));
        percent_->SetValue(nothingFails * 100);
    }
    nothingFails_->SetLabelText(PercentOf(nothingFails));
    failures_->SetLabelText(Decimal(ExactFailures(plan_), 2));
    std::vector<Report::Bar> likeliest = LikeliestByCalculation(plan_);
    for (std::size_t row = 0; row < LikeliestShown; ++row) {
        bool filled = row < likeliest.size();
        likeliest_[row]->SetLabelText(filled ? "    " + likeliest[row].Name : "");
        chances_[row]->SetLabelText(filled ? PercentOf(likeliest[row].Share) : "");
    }
    panel_->Layout();
}

void RehearsalFrame::OnWish(double percent) {
    wish_ = percent;
    slider_->SetValue(static_cast<int>(std::lround(percent)));
    percent_->SetValue(percent);
    ApplyWish();
}

void RehearsalFrame::OnChoose() {
    wxString folder = profile_.empty() ? look::Shown(platform::ProgramFile("\\"))
                                       : wxFileName(look::Shown(profile_)).GetPath();
    wxFileDialog dialog(this, "Choose a profile", folder, "", ProfileFiles,
                        wxFD_OPEN | wxFD_FILE_MUST_EXIST);
    if (dialog.ShowModal() == wxID_OK) Open(look::Stored(dialog.GetPath()));
}

// Returns nothing when the pilot cancelled.
std::optional<Report> RehearsalFrame::RehearseWithProgress() {
    wxProgressDialog dialog(Title, "Flying with " + name_->GetLabelText(), 1000, this,
                            wxPD_APP_MODAL | wxPD_CAN_ABORT | wxPD_REMAINING_TIME);
    bool changed = wish_ || std::ranges::any_of(systems_, [](wxCheckBox* box) {
                       return box->IsEnabled() && !box->GetValue();
                   });
    bool goesOn = true;
    Report report =
        Rehearse(NameInUtf8(profile_) + (changed ? ", changed" : ""), plan_, [&](double share) {
            return goesOn = dialog.Update(static_cast<int>(std::lround(share * 999)));
        });
    if (!goesOn) return std::nullopt;
    return report;
}

void RehearsalFrame::OnRehearse() {
    std::optional<Report> report = RehearseWithProgress();
    if (!report) return;
    PageFile file = WritePage(profile_, PageOf(*report));
    if (file.Path.empty()) return Warn("Could not write " + file.Usual);
    note_->SetLabelText("The report is " + look::Shown(file.Path));
    if (!wxLaunchDefaultApplication(look::Shown(file.Path))) Warn("Could not open " + file.Path);
}

void RehearsalFrame::OnSave() {
    wxFileName old(look::Shown(profile_));
    wxFileDialog dialog(this, "Save as", old.GetPath(), old.GetName() + " 2.qmp", ProfileFiles,
                        wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() != wxID_OK) return;
    wxString chosen = dialog.GetPath();
    if (!chosen.Lower().EndsWith(".qmp")) chosen += ".qmp";
    std::string path = look::Stored(chosen);
    if (chosen != dialog.GetPath() && platform::FileExists(path))
        return Warn(path + " exists. To replace it, choose it in the list.");
    if (!SaveProfile(path)) return Warn("Could not write " + path);
    Open(path);
    note_->SetLabelText("Saved as " + chosen);
}

class RehearsalApp final : public wxApp {
   public:
    explicit RehearsalApp(std::string profile) : profile_(std::move(profile)) {}

    bool OnInit() override {
        platform::ShowWarningIcons();
        auto* frame = new RehearsalFrame;
        frame->Show();
        if (!profile_.empty()) frame->Open(profile_);
        return true;
    }

   private:
    std::string profile_;
};

}  // namespace

wxFrame* MakeFrame() {
    return new RehearsalFrame;
}

int RunWindow(const std::string& profile) {
    char name[] = "rehearse";
    char* arguments[] = {name, nullptr};
    int count = 1;
    platform::CloseOwnConsole();
    platform::PreferX11();
    wxLogNull noMessagesOfItsOwn;
    wxApp::SetInstance(new RehearsalApp(profile));
    int code = wxEntry(count, arguments);
    if (code != -1) return code;
    std::cerr << "rehearse: there is no display for its window\n";
    return EXIT_FAILURE;
}

}  // namespace quirkmeter::rehearse
