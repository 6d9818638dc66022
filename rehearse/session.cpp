#include "rehearse/session.h"

#include <wx/file.h>
#include <wx/utils.h>

#include <clocale>

#include "persist/profile.h"
#include "platform/inprocess/inprocess.h"
#include "platform/platform.h"
#include "rehearse/workers.h"

namespace quirkmeter::rehearse {

namespace {

constexpr unsigned long LookEveryMilliseconds = 50;

char DecimalSeparator() {
    std::setlocale(LC_NUMERIC, "");
    char separator = *std::localeconv()->decimal_point;
    std::setlocale(LC_NUMERIC, "C");
    return separator;
}

// What a worker must know.
std::vector<wxString> WorkerArguments(const Options& options) {
    const FlightPlan& plan = options.Plan;
    auto number = [](auto value) { return wxString::FromCDouble(static_cast<double>(value)); };
    return {wxString(options.Profile.c_str(), wxConvFile),
            "--hours",
            number(plan.Hours),
            "--flights",
            wxString::Format("%lld", static_cast<long long>(plan.Flights)),
            "--engines",
            number(plan.Engines),
            "--gear-up",
            number(plan.RetractedAfterTakeOff),
            "--gear-down",
            number(plan.ExtendedBeforeLanding),
            "--seed",
            wxString::Format("%llu", static_cast<unsigned long long>(plan.Seed))};
}

}  // namespace

std::optional<std::string> LoadProfile(const std::string& path) {
    platform::inprocess::SetDecimalSeparator(DecimalSeparator());
    BuildCatalogue();
    auto fault = ApplyProfile(path);
    if (!fault) return std::nullopt;
    std::string place = fault->Line > 0 ? path + ":" + std::to_string(fault->Line) : path;
    return place + ": " + std::string(fault->What);
}

Rehearsal Fly(const Options& options, const std::function<bool(double share)>& goesOn) {
    wxString name(platform::FileName(options.Profile).c_str(), wxConvFile);
    Rehearsal rehearsal{name.utf8_string(), options.Plan, {}};
    Workers workers(WorkerArguments(options));
    while (workers.Collect(rehearsal.Flown) && goesOn(static_cast<double>(rehearsal.Flown.Flights) /
                                                      static_cast<double>(options.Plan.Flights)))
        wxMilliSleep(LookEveryMilliseconds);
    return rehearsal;
}

bool WriteReport(const std::string& path, const std::string& report) {
    wxTempFile file(wxString(path.c_str(), wxConvFile));
    return file.IsOpened() && file.Write(report.data(), report.size()) && file.Commit();
}

}  // namespace quirkmeter::rehearse
