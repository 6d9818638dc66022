#include <wx/app.h>

#include "ui/frm_main.h"

namespace quirkmeter {

class App final : public wxApp {
   public:
    // There is no command line, so the toolkit's own handling of it is left out.
    bool OnInit() override {
        auto* window = new frmMain;
        if (!window->Load()) {
            window->Destroy();
            return false;
        }
        window->Show();
        return true;
    }
};

}  // namespace quirkmeter

wxIMPLEMENT_APP(quirkmeter::App);
