#include "practice/window.h"

#include <wx/display.h>
#include <wx/spinctrl.h>
#include <wx/wx.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <thread>
#include <vector>

#include "practice/displays.h"
#include "practice/wire.h"

namespace quirkmeter::practice {

namespace {

constexpr int RefreshMilliseconds = 200;
constexpr int TankColumns = 3;
constexpr double FeetPerMetre = 1 / 0.3048;

// In the order of Misbehaviour.
const char* const MisbehaviourLabels[] = {"None: answers properly",  "Silent: no answer",
                                          "Late: after 1.5 seconds", "Wrong: answers 2",
                                          "Drop: no window",         "Old: version too low"};

// An artificial horizon, drawn like the program's icon file.
wxIcon Horizon() {
    wxBitmap bitmap(32, 32, 24);
    wxMemoryDC dc(bitmap);
    dc.SetBackground(wxColour(32, 34, 36));
    dc.Clear();
    dc.SetPen(*wxTRANSPARENT_PEN);
    dc.SetBrush(wxColour(70, 150, 230));
    dc.DrawCircle(16, 16, 13);
    dc.SetBrush(wxColour(130, 80, 30));
    dc.DrawEllipticArc(3, 3, 27, 27, 180, 360);
    dc.SelectObject(wxNullBitmap);
    wxIcon icon;
    icon.CopyFromBitmap(bitmap);
    return icon;
}

wxString PositionText(const FlightView& view) {
    return wxString::Format(
        L"%.3f\u00B0 %s   %.3f\u00B0 %s   %.0f ft (%.0f m)   Slew %s", std::abs(view.Latitude),
        view.Latitude < 0 ? "S" : "N", std::abs(view.Longitude), view.Longitude < 0 ? "W" : "E",
        view.Altitude * FeetPerMetre, view.Altitude, view.Slewing ? "on" : "off");
}

void ShowText(wxStaticText* label, const wxString& text) {
    if (label->GetLabelText() != text) label->SetLabelText(text);
}

template <typename Control>
void ShowValue(Control* control, int value) {
    if (control->GetValue() != value) control->SetValue(value);
}

class PracticeFrame : public wxFrame {
   public:
    explicit PracticeFrame(Simulator& simulator);

   private:
    wxSizer* MakeCockpit(const FlightView& view);
    wxSizer* MakeFlightControls(wxWindow* parent);
    wxSizer* MakeTanks(wxWindow* parent, std::size_t count);
    wxSizer* MakeEffects(const FlightView& view);

    void BindSwitch(wxCheckBox* box, Verb verb);
    void Do(const Command& command);
    void ShowFlight(const FlightView& view);
    void OnTimer(wxTimerEvent&);

    Simulator& simulator_;
    wxPanel* panel_;
    wxRadioButton* onGround_;
    wxRadioButton* airborne_;
    wxCheckBox* paused_;
    wxCheckBox* gear_;
    wxCheckBox* flaps_;
    wxSpinCtrl* engines_;
    wxChoice* misbehaviour_;
    std::vector<wxSlider*> tanks_;
    std::vector<wxStaticText*> percents_;
    AnnunciatorPanel* annunciators_;
    ScreenPanel* screen_;
    wxStaticText* position_;
    wxTimer timer_;
};

PracticeFrame::PracticeFrame(Simulator& simulator)
    : wxFrame(nullptr, wxID_ANY, "Practice Simulator"),
      simulator_(simulator),
      panel_(new wxPanel(this)),
      timer_(this) {
    SetIcon(Horizon());
    FlightView view = simulator_.View();
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(MakeCockpit(view), wxSizerFlags().Expand().Border());
    column->Add(MakeEffects(view), wxSizerFlags(1).Expand().Border(wxALL & ~wxTOP));
    panel_->SetSizer(column);
    auto* frame = new wxBoxSizer(wxVERTICAL);
    frame->Add(panel_, wxSizerFlags(1).Expand());
    SetSizerAndFit(frame);
    // Leaves the left side of the screen to Quirkmeter.
    wxRect screen = wxDisplay(this).GetClientArea();
    Move(std::max(screen.x, screen.GetRight() + 1 - GetSize().x), screen.y);

    ShowFlight(view);
    Bind(wxEVT_TIMER, &PracticeFrame::OnTimer, this);
    timer_.Start(RefreshMilliseconds);
}

wxSizer* PracticeFrame::MakeCockpit(const FlightView& view) {
    auto* cockpit = new wxStaticBoxSizer(wxHORIZONTAL, panel_, "Cockpit");
    wxWindow* parent = cockpit->GetStaticBox();
    cockpit->Add(MakeFlightControls(parent), wxSizerFlags().Border());
    cockpit->AddSpacer(FromDIP(8));
    auto* fuel = new wxBoxSizer(wxVERTICAL);
    fuel->Add(new wxStaticText(parent, wxID_ANY, "Fuel in the tanks"),
              wxSizerFlags().Border(wxBOTTOM));
    fuel->Add(MakeTanks(parent, view.FuelPercent.size()), wxSizerFlags(1).Expand());
    cockpit->Add(fuel, wxSizerFlags(1).Border());
    return cockpit;
}

wxSizer* PracticeFrame::MakeFlightControls(wxWindow* parent) {
    onGround_ = new wxRadioButton(parent, wxID_ANY, "On the &ground", wxDefaultPosition,
                                  wxDefaultSize, wxRB_GROUP);
    airborne_ = new wxRadioButton(parent, wxID_ANY, "&Airborne");
    paused_ = new wxCheckBox(parent, wxID_ANY, "&Paused");
    gear_ = new wxCheckBox(parent, wxID_ANY, "Gear &down");
    flaps_ = new wxCheckBox(parent, wxID_ANY, "&Flaps down");
    auto* enginesLabel = new wxStaticText(parent, wxID_ANY, "&Engines");
    engines_ = new wxSpinCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                              wxSP_ARROW_KEYS, 0, 4);
    auto* misbehaviourLabel = new wxStaticText(parent, wxID_ANY, "&Misbehaviour");
    misbehaviour_ = new wxChoice(parent, wxID_ANY);
    for (const char* label : MisbehaviourLabels) misbehaviour_->Append(label);

    onGround_->Bind(wxEVT_RADIOBUTTON, [this](wxCommandEvent&) { Do({Verb::Land}); });
    airborne_->Bind(wxEVT_RADIOBUTTON, [this](wxCommandEvent&) { Do({Verb::TakeOff}); });
    paused_->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent& event) {
        Do({event.IsChecked() ? Verb::Pause : Verb::Resume});
    });
    BindSwitch(gear_, Verb::Gear);
    BindSwitch(flaps_, Verb::Flaps);
    engines_->Bind(wxEVT_SPINCTRL, [this](wxSpinEvent& event) {
        Do({Verb::Engines, event.GetPosition()});
    });
    misbehaviour_->Bind(wxEVT_CHOICE, [this](wxCommandEvent& event) {
        Do({Verb::Misbehave, event.GetSelection()});
    });

    auto* switches = new wxBoxSizer(wxVERTICAL);
    for (wxWindow* control : std::initializer_list<wxWindow*>{onGround_, airborne_, paused_})
        switches->Add(control, wxSizerFlags().Border(wxBOTTOM, FromDIP(4)));
    auto* levers = new wxBoxSizer(wxHORIZONTAL);
    levers->Add(gear_, wxSizerFlags().Border(wxRIGHT, FromDIP(12)));
    levers->Add(flaps_);
    switches->Add(levers, wxSizerFlags().Border(wxBOTTOM, FromDIP(8)));

    auto* choices = new wxFlexGridSizer(2, wxSize(FromDIP(8), FromDIP(6)));
    choices->Add(enginesLabel, wxSizerFlags().CentreVertical());
    choices->Add(engines_);
    choices->Add(misbehaviourLabel, wxSizerFlags().CentreVertical());
    // wxWidgets makes it too low for large texts.
    misbehaviour_->SetMinSize({-1, GetCharHeight() + FromDIP(18)});
    choices->Add(misbehaviour_);
    switches->Add(choices);
    return switches;
}

wxSizer* PracticeFrame::MakeTanks(wxWindow* parent, std::size_t count) {
    auto* grid = new wxFlexGridSizer(3 * TankColumns, wxSize(FromDIP(6), FromDIP(6)));
    for (std::size_t column = 0; column < TankColumns; ++column)
        grid->AddGrowableCol(3 * column + 1, 1);
    std::span<const Variable> tanks = VariablesOf(VariableKind::Tank);
    for (std::size_t i = 0; i < count; ++i) {
        auto* name = new wxStaticText(parent, wxID_ANY, tanks[i].Name);
        auto* slider =
            new wxSlider(parent, wxID_ANY, 100, 0, 100, wxDefaultPosition, FromDIP(wxSize(50, -1)));
        auto* percent = new wxStaticText(parent, wxID_ANY, "100 %", wxDefaultPosition,
                                         wxDefaultSize, wxALIGN_RIGHT | wxST_NO_AUTORESIZE);
        slider->SetName(wxString(tanks[i].Name) + " tank");
        slider->Bind(wxEVT_SLIDER, [this, i](wxCommandEvent& event) {
            Do({Verb::Fuel, static_cast<int>(i) + 1, event.GetInt()});
        });
        grid->Add(name, wxSizerFlags().CentreVertical());
        grid->Add(slider, wxSizerFlags().Expand());
        grid->Add(percent, wxSizerFlags().CentreVertical().Border(wxRIGHT, FromDIP(10)));
        tanks_.push_back(slider);
        percents_.push_back(percent);
    }
    return grid;
}

wxSizer* PracticeFrame::MakeEffects(const FlightView& view) {
    auto* effects =
        new wxStaticBoxSizer(wxVERTICAL, panel_, "What Quirkmeter does to the aircraft");
    wxWindow* parent = effects->GetStaticBox();
    auto heading = [&](const char* text) {
        effects->Add(new wxStaticText(parent, wxID_ANY, text),
                     wxSizerFlags().Expand().Border(wxLEFT | wxTOP));
    };
    heading("Text on the simulator's screen");
    screen_ = new ScreenPanel(parent);
    annunciators_ = new AnnunciatorPanel(parent, view.Lamps);
    position_ = new wxStaticText(parent, wxID_ANY, PositionText(view), wxDefaultPosition,
                                 wxDefaultSize, wxST_NO_AUTORESIZE);
    effects->Add(screen_, wxSizerFlags().Expand().Border());
    heading("Amber: switched off, cut or leaking. Red: failed or disconnected.");
    effects->Add(annunciators_, wxSizerFlags(1).Expand().Border());
    effects->Add(position_, wxSizerFlags().Expand().Border());
    return effects;
}

void PracticeFrame::BindSwitch(wxCheckBox* box, Verb verb) {
    box->Bind(wxEVT_CHECKBOX, [this, verb](wxCommandEvent& event) {
        Do({verb, event.IsChecked()});
    });
}

void PracticeFrame::Do(const Command& command) {
    simulator_.Apply(command);
    ShowFlight(simulator_.View());
}

void PracticeFrame::ShowFlight(const FlightView& view) {
    ShowValue(view.Airborne ? airborne_ : onGround_, true);
    ShowValue(paused_, view.Paused);
    ShowValue(gear_, view.GearDown);
    ShowValue(flaps_, view.FlapsDown);
    ShowValue(engines_, view.Engines);
    int kind = static_cast<int>(view.CurrentMisbehaviour);
    if (misbehaviour_->GetSelection() != kind) misbehaviour_->SetSelection(kind);
    for (std::size_t i = 0; i < tanks_.size(); ++i) {
        ShowValue(tanks_[i], view.FuelPercent[i]);
        ShowText(percents_[i], wxString::Format("%d %%", view.FuelPercent[i]));
    }
    annunciators_->SetLamps(view.Lamps);
    screen_->SetText(view.ScreenText);
    ShowText(position_, PositionText(view));
}

void PracticeFrame::OnTimer(wxTimerEvent&) {
    if (simulator_.Ended())
        Close();
    else
        ShowFlight(simulator_.View());
}

class PracticeApp : public wxApp {
   public:
    PracticeApp(Simulator& simulator, const std::string& className, std::string& fault)
        : simulator_(simulator), className_(className), fault_(fault) {}

    // wxWidgets must not parse the command line.
    bool OnInit() override {
        MakeFrame(simulator_);
        wire_ = std::thread([this] {
            Wire wire(simulator_, className_);
            if (std::string fault = wire.Open(); !fault.empty())
                return CallAfter([this, fault] { ShowFault(fault); });
            CallAfter([this] { ShowWindow(); });
            wire.Serve();
        });
        return true;
    }

    int OnExit() override {
        simulator_.End();
        wire_.join();
        return 0;
    }

   private:
    void ShowWindow() {
        if (GetTopWindow()) GetTopWindow()->Show();
    }

    void ShowFault(const std::string& fault) {
        fault_ = fault;
        // A message box does not notice the end of the simulator, so a signal must end the process.
        for (int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
        wxMessageBox(wxString(fault.data(), *wxConvFileName), "Practice Simulator");
        simulator_.End();
    }

    Simulator& simulator_;
    std::string className_;
    std::thread wire_;
    std::string& fault_;
};

}  // namespace

wxFrame* MakeFrame(Simulator& simulator) {
    return new PracticeFrame(simulator);
}

std::string RunWindow(Simulator& simulator, const std::string& className) {
    char name[] = "practice-simulator";
    char* arguments[] = {name, nullptr};
    int count = 1;
    std::string fault;
    platform::CloseOwnConsole();
    platform::PreferX11();
    // Without a display, wxWidgets' own log target crashes.
    delete wxLog::SetActiveTarget(new wxLogStderr);
    wxApp::SetInstance(new PracticeApp(simulator, className, fault));
    if (wxEntry(count, arguments) != 0) fault = "cannot open the display";
    return fault;
}

}  // namespace quirkmeter::practice
