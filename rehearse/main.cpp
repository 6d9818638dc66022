// rehearse: shows what a profile will do before the pilot flies with it.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>

#include "persist/profile.h"
#include "platform/platform.h"
#include "rehearse/files.h"
#include "rehearse/options.h"
#include "rehearse/print.h"
#include "rehearse/rehearsal.h"
#include "rehearse/window.h"
#include "rehearse/wish.h"

namespace quirkmeter::rehearse {

namespace {

constexpr int WrongUse = 2;
constexpr int Interrupted = 130;  // as a shell reports it

volatile std::sig_atomic_t InterruptSeen = 0;

int Fail(const std::string& what, int code) {
    std::cerr << "rehearse: " << what << "\n";
    return code;
}

// True when rehearse was started from a desktop, where nobody can read printed lines.
bool IsByMouse() {
    return !platform::OnTerminal(0) && !platform::OnTerminal(1) && !platform::OnTerminal(2) &&
           !platform::OutputRedirected();
}

// The progress line on a terminal. Runs of less than a second show none.
class ProgressLine {
   public:
    ~ProgressLine() {
        if (shown_) std::cerr << "\r" << std::string(30, ' ') << "\r";
    }

    void Show(double share) {
        std::chrono::duration<double> flown = std::chrono::steady_clock::now() - start_;
        if (!platform::OnTerminal(2) || flown.count() < 1) return;
        shown_ = true;
        std::cerr << "\r" << std::lround(share * 100) << " %, "
                  << std::lround(flown.count() * (1 - share) / share) << " s left   " << std::flush;
    }

   private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool shown_ = false;
};

// Returns an exit code for a failure; nothing when the profile was made.
std::optional<int> MakeProfile(const Options& options) {
    if (!options.Overwrite && platform::FileExists(options.SaveFile))
        return Fail(options.SaveFile + " exists; --overwrite replaces it", WrongUse);
    SystemSet systems = SystemSet().set();
    std::string fault = options.Only.empty() ? "" : ReadSystems(options.Only, systems);
    if (fault.empty()) {
        KeepOnly(systems);
        fault = MeetWish(*options.NothingFails, options.Plan);
    }
    if (!fault.empty()) return Fail(fault, WrongUse);
    if (!SaveProfile(options.SaveFile))
        return Fail("cannot write " + options.SaveFile, EXIT_FAILURE);
    return std::nullopt;
}

int RunOnTerminal(const Options& options) {
    if (auto fault = LoadProfile(options.Profile)) return Fail(*fault, WrongUse);
    if (options.NothingFails)
        if (auto failed = MakeProfile(options)) return *failed;
    for (const std::string& file : {options.HtmlFile, options.CsvFile})
        if (!file.empty() && !CanWriteReport(file))
            return Fail("cannot write " + file, EXIT_FAILURE);

    std::signal(SIGINT, [](int) { InterruptSeen = 1; });
    const std::string& profile = options.NothingFails ? options.SaveFile : options.Profile;
    Report report =
        Rehearse(NameInUtf8(profile), options.Plan, [line = ProgressLine()](double share) mutable {
            line.Show(share);
            return InterruptSeen == 0;
        });
    std::signal(SIGINT, SIG_DFL);

    if (options.HtmlFile != StandardOutput && options.CsvFile != StandardOutput)
        std::cout << TextOf(report);
    if (options.Check) std::cout << "\n" << ChancesOf(report);
    // Print first: the files may be standard output under another name.
    if (!std::cout.flush()) return Fail("cannot write to standard output", EXIT_FAILURE);
    if (!options.HtmlFile.empty() && !WriteReport(options.HtmlFile, PageOf(report)))
        return Fail("cannot write " + options.HtmlFile, EXIT_FAILURE);
    if (!options.CsvFile.empty() && !WriteReport(options.CsvFile, CsvOf(report)))
        return Fail("cannot write " + options.CsvFile, EXIT_FAILURE);
    if (InterruptSeen) return Interrupted;
    auto tooFar = std::ranges::count(report.Chances, true, &Report::Chance::TooFar);
    if (options.Check && tooFar > 0)
        return Fail(std::to_string(tooFar) + " beyond four standard errors", EXIT_FAILURE);
    return EXIT_SUCCESS;
}

}  // namespace

}  // namespace quirkmeter::rehearse

int main(int argc, char** argv) {
    using namespace quirkmeter::rehearse;
    Options options;
    std::string fault = ParseOptions(argc, argv, options);
    if (!fault.empty()) return Fail(fault + "; rehearse --help tells more", WrongUse);
    if (options.Help || options.Version) {
        std::cout << (options.Help ? Usage : "rehearse " QUIRKMETER_VERSION "\n");
        return EXIT_SUCCESS;
    }
    if (options.NothingElse && IsByMouse()) return RunWindow(options.Profile);
    if (options.Profile.empty())
        return Fail("no profile was given; rehearse --help tells more", WrongUse);
    return RunOnTerminal(options);
}
