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
#include <fstream>
#include <iostream>
#include <vector>

#include "platform/platform.h"
#include "rehearse/files.h"
#include "rehearse/flight.h"
#include "rehearse/print.h"

namespace quirkmeter::rehearse {

namespace {

constexpr char Title[] = "FS2002 Quirkmeter - Rehearsal";

wxString Shown(const std::string& text) {
    return {text.c_str(), wxConvFile};
}

std::string Stored(const wxString& path) {
    return std::string(path.mb_str(wxConvFile));
}

int Fail(const std::string& text) {
    wxMessageBox(Shown(text), Title, wxOK | wxICON_WARNING);
    return EXIT_FAILURE;
}

// Empty when the user chose none.
std::string ChooseProfile() {
    wxFileDialog dialog(
        nullptr, "Choose the profile to rehearse", Shown(platform::ProgramFile("\\")), "",
        "FS2002 Quirkmeter Profile (*.qmp)|*.qmp", wxFD_OPEN | wxFD_FILE_MUST_EXIST);
    return dialog.ShowModal() == wxID_OK ? Stored(dialog.GetPath()) : "";
}

// A file of that name that is no report is somebody else's and must stay.
bool MayHoldReport(const std::string& path) {
    if (!platform::CanReplaceFile(path)) return false;
    char start[1024];
    std::ifstream file(path, std::ios::binary);
    file.read(start, sizeof start);
    return !file.is_open() || IsPage({start, static_cast<std::size_t>(file.gcount())});
}

// Where the report may go, the best place first: beside the profile, or else to the user's
// documents or the temporary files.
std::vector<std::string> ReportPaths(const wxFileName& profile) {
    constexpr int MaxNames = 99;
    std::vector<std::string> paths;
    for (const wxString& folder :
         {profile.GetPath(), wxStandardPaths::Get().GetDocumentsDir(), wxFileName::GetTempDir()})
        for (int n = 1; n <= MaxNames; ++n) {
            wxString name = profile.GetName() + " rehearsal";
            if (n > 1) name << " " << n;
            std::string path = Stored(wxFileName(folder, name, "htm").GetFullPath());
            if (!MayHoldReport(path)) continue;
            paths.push_back(path);
            break;
        }
    return paths;
}

class RehearsalApp final : public wxApp {
   public:
    explicit RehearsalApp(const Options& options) : options_(options) {}

    bool OnInit() override { return true; }

    int OnRun() override {
        if (options_.Profile.empty()) options_.Profile = ChooseProfile();
        if (options_.Profile.empty()) return EXIT_SUCCESS;
        if (auto fault = LoadProfile(options_.Profile)) return Fail(*fault);
        wxFileName profile(Shown(options_.Profile));
        profile.MakeAbsolute();
        std::vector<std::string> paths = ReportPaths(profile);
        if (paths.empty()) return Fail("There is no place where the report can be written.");
        std::string page = PageOf(Rehearse());
        for (const std::string& path : paths)
            if (WriteReport(path, page)) return Show(path, profile);
        return Fail("Could not write " + paths.front());
    }

   private:
    Report Rehearse() {
        wxProgressDialog dialog(Title, "Flying with " + Shown(platform::FileName(options_.Profile)),
                                1000, nullptr,
                                wxPD_CAN_ABORT | wxPD_REMAINING_TIME | wxPD_AUTO_HIDE);
        Tally flown = Fly(options_.Plan, [&dialog](double share) {
            return dialog.Update(static_cast<int>(std::lround(share * 999)));
        });
        return MakeReport(NameInUtf8(options_.Profile), options_.Plan, flown);
    }

    // Says so if the report is not where the user will look for it.
    static int Show(const std::string& path, const wxFileName& profile) {
        std::string usual = Stored(
            wxFileName(profile.GetPath(), profile.GetName() + " rehearsal", "htm").GetFullPath());
        if (path != usual)
            wxMessageBox(
                Shown((platform::FileExists(usual) ? "This file is no report, or is "
                                                     "write-protected, and was left as it is:\n"
                                                   : "This file could not be written:\n") +
                      usual + "\n\nThe report is here:\n" + path),
                Title, wxOK | wxICON_INFORMATION);
        if (!wxLaunchDefaultApplication(Shown(path))) return Fail("Could not open " + path);
        return EXIT_SUCCESS;
    }

    Options options_;
};

}  // namespace

int RunWindow(const Options& options) {
    char name[] = "rehearse";
    char* arguments[] = {name, nullptr};
    int count = 1;
    platform::CloseOwnConsole();
    platform::PreferX11();
    wxLogNull noMessagesOfItsOwn;
    wxApp::SetInstance(new RehearsalApp(options));
    int code = wxEntry(count, arguments);
    if (code != -1) return code;
    std::cerr << "rehearse: there is no display for its window\n";
    return EXIT_FAILURE;
}

}  // namespace quirkmeter::rehearse
