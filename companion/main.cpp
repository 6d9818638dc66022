// fsqmhc.exe: a minimised window for as long as Quirkmeter runs in Hardcore Mode.
#include <wx/app.h>
#include <wx/frame.h>
#include <wx/timer.h>

#include "companion.h"

namespace quirkmeter {

class CompanionFrame final : public wxFrame {
   public:
    CompanionFrame() : wxFrame(nullptr, wxID_ANY, "FSQMHC"), timer_(this) {
        Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
            if (!companion_.Tick()) Close(true);
        });
    }

    bool Start() { return companion_.Start() && timer_.Start(1000); }

   private:
    Companion companion_{"\\" QUIRKMETER_PROGRAM};
    wxTimer timer_;
};

class CompanionApp final : public wxApp {
   public:
    // The parameter that Quirkmeter passes means nothing.
    bool OnInit() override {
        // Whether the session may end is only a question, and gone with it would be the flight.
        Bind(wxEVT_QUERY_END_SESSION, [](wxCloseEvent&) {});
        return true;
    }

    // Not in OnInit, where ending at once would be an error.
    int OnRun() override {
        auto* window = new CompanionFrame;
        if (!window->Start()) {
            window->Destroy();
            return 0;
        }
        window->Iconize();
        window->Show();
        return wxApp::OnRun();
    }
};

}  // namespace quirkmeter

wxIMPLEMENT_APP(quirkmeter::CompanionApp);
