#include <wx/app.h>

#include <cstdlib>

#include "platform/platform.h"
#include "ui/frm_main.h"

namespace quirkmeter {

class App final : public wxApp {
   public:
    App() { platform::PreferX11(); }

    // The program has no command line: skip wxWidgets' parser.
    bool OnInit() override { return true; }

    int OnRun() override {
        auto* window = new frmMain;
        if (!window->Load()) {
            int exitCode = window->ExitCode();
            window->Destroy();
            return exitCode;
        }
        window->ShowAndStart();
        return wxApp::OnRun();
    }
};

}  // namespace quirkmeter

wxIMPLEMENT_APP(quirkmeter::App);
