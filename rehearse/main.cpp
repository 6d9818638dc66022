// rehearse: what a profile will do to the pilot, before flying.
#include <wx/init.h>
#include <wx/stopwatch.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <iostream>

#include "platform/platform.h"
#include "rehearse/session.h"
#include "rehearse/window.h"
#include "rehearse/workers.h"

namespace quirkmeter::rehearse {

namespace {

constexpr int WrongUse = 2;
constexpr int Interrupted = 130;  // as a shell has it

volatile std::sig_atomic_t InterruptSeen = 0;

int Fail(const std::string& what, int code) {
    std::cerr << "rehearse: " << what << "\n";
    return code;
}

// Started from a desktop, where nobody could read what is printed.
bool ByMouse(const Options& options) {
    return options.NothingElse && !platform::OnTerminal(0) && !platform::OnTerminal(1) &&
           !platform::OnTerminal(2);
}

void PrintProgress(double share, double seconds) {
    if (share <= 0) return;
    std::cerr << "\r" << std::lround(share * 100) << " %, "
              << std::lround(seconds * (1 - share) / share) << " s left   " << std::flush;
}

// One that is shorter than it takes to read it shows no progress.
Rehearsal FlyWithProgress(const Options& options) {
    bool shows = platform::OnTerminal(2);
    bool shown = false;
    wxStopWatch watch;
    std::signal(SIGINT, [](int) { InterruptSeen = 1; });
    Rehearsal rehearsal = Fly(options, [&](double share) {
        double seconds = static_cast<double>(watch.Time()) / 1000;
        if (shows && seconds > 1) {
            PrintProgress(share, seconds);
            shown = true;
        }
        return InterruptSeen == 0;
    });
    std::signal(SIGINT, SIG_DFL);
    if (shown) std::cerr << "\r" << std::string(30, ' ') << "\r";
    return rehearsal;
}

int Report(const Options& options, const Rehearsal& rehearsal) {
    std::cout << TextReport(rehearsal);
    if (!options.HtmlFile.empty() && !WriteReport(options.HtmlFile, HtmlReport(rehearsal)))
        return Fail("cannot write " + options.HtmlFile, EXIT_FAILURE);
    if (!options.CsvFile.empty() && !WriteReport(options.CsvFile, CsvReport(rehearsal)))
        return Fail("cannot write " + options.CsvFile, EXIT_FAILURE);
    if (!options.Check) return EXIT_SUCCESS;
    Comparison comparison = Compare(rehearsal);
    std::cout << "\n" << comparison.Text;
    if (comparison.Beyond == 0) return EXIT_SUCCESS;
    return Fail(std::to_string(comparison.Beyond) + " beyond four standard errors", EXIT_FAILURE);
}

int RunOnTerminal(const Options& options) {
    wxInitializer toolkit;
    if (!toolkit) return Fail("the toolkit cannot be initialized", EXIT_FAILURE);
    if (auto fault = LoadProfile(options.Profile)) return Fail(*fault, WrongUse);
    if (options.Shares > 0) {
        FlyShare(options.Plan, options.Share, options.Shares);
        return EXIT_SUCCESS;
    }
    Rehearsal rehearsal = FlyWithProgress(options);
    if (rehearsal.Flown.Flights == 0)
        return InterruptSeen ? Interrupted : Fail("no flight could be flown", EXIT_FAILURE);
    int code = Report(options, rehearsal);
    if (InterruptSeen) return Interrupted;
    if (rehearsal.Flown.Flights < options.Plan.Flights)
        return Fail("some of the flights were lost", EXIT_FAILURE);
    return code;
}

int Run(const Options& options) {
    if (options.Help) {
        std::cout << Usage;
        return EXIT_SUCCESS;
    }
    if (ByMouse(options)) return RunWindow(options);
    if (!options.Profile.empty()) return RunOnTerminal(options);
    std::cerr << Usage;
    return WrongUse;
}

}  // namespace

}  // namespace quirkmeter::rehearse

int main(int argc, char** argv) {
    using namespace quirkmeter::rehearse;
    Options options;
    std::string fault;
    if (ParseOptions(argc, argv, options, fault)) return Run(options);
    std::cerr << "rehearse: " << fault << "\n" << Usage;
    return WrongUse;
}
