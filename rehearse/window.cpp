#include "rehearse/window.h"

#include <wx/app.h>
#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/msgdlg.h>
#include <wx/progdlg.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include <cmath>
#include <cstdlib>

#include "platform/platform.h"
#include "rehearse/session.h"

namespace quirkmeter::rehearse {

namespace {

constexpr char Title[] = "FS2002 Quirkmeter - Rehearsal";

class RehearsalApp final : public wxApp {
   public:
    explicit RehearsalApp(const Options& options) : options_(options) {}

    bool OnInit() override { return true; }

    int OnRun() override {
        if (options_.Profile.empty() && !ChooseProfile()) return EXIT_SUCCESS;
        if (auto fault = LoadProfile(options_.Profile)) return Fail(*fault);
        Rehearsal rehearsal = FlyWithProgress();
        if (rehearsal.Flown.Flights == 0) return EXIT_SUCCESS;
        return Show(rehearsal);
    }

   private:
    bool ChooseProfile() {
        wxFileName program(wxStandardPaths::Get().GetExecutablePath());
        wxFileDialog dialog(nullptr, "Choose the profile to rehearse", program.GetPath(), "",
                            "FS2002 Quirkmeter Profile (*.qmp)|*.qmp",
                            wxFD_OPEN | wxFD_FILE_MUST_EXIST);
        if (dialog.ShowModal() != wxID_OK) return false;
        options_.Profile = dialog.GetPath().mb_str(wxConvFile);
        return true;
    }

    Rehearsal FlyWithProgress() {
        wxProgressDialog dialog(Title, "Flying with " + Shown(platform::FileName(options_.Profile)),
                                1000, nullptr,
                                wxPD_CAN_ABORT | wxPD_REMAINING_TIME | wxPD_AUTO_HIDE);
        return Fly(options_, [&dialog](double share) {
            return dialog.Update(static_cast<int>(std::lround(share * 999)));
        });
    }

    int Show(const Rehearsal& rehearsal) {
        wxFileName report(Shown(options_.Profile));
        report.SetFullName(report.GetName() + " rehearsal.htm");
        report.MakeAbsolute();
        std::string path(report.GetFullPath().mb_str(wxConvFile));
        if (!WriteReport(path, HtmlReport(rehearsal))) return Fail("Could not write " + path);
        if (!wxLaunchDefaultApplication(report.GetFullPath()))
            return Fail("Could not open " + path);
        return EXIT_SUCCESS;
    }

    static int Fail(const std::string& text) {
        wxMessageBox(Shown(text), Title, wxOK | wxICON_WARNING);
        return EXIT_FAILURE;
    }

    static wxString Shown(const std::string& text) { return {text.c_str(), wxConvFile}; }

    Options options_;
};

}  // namespace

int RunWindow(const Options& options) {
    char name[] = "rehearse";
    char* arguments[] = {name, nullptr};
    int count = 1;
    platform::CloseOwnConsole();
    platform::PreferX11();
    // Where there is no display, the widget set's own target dies while it tries to show that.
    delete wxLog::SetActiveTarget(new wxLogStderr);
    wxApp::SetInstance(new RehearsalApp(options));
    return wxEntry(count, arguments);
}

}  // namespace quirkmeter::rehearse
