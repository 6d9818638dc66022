#include "rehearse/rehearsal.h"

#include <chrono>
#include <ctime>
#include <iterator>

#include "rehearse/flight.h"

namespace quirkmeter::rehearse {

namespace {

std::string Today() {
    std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    char day[32];
    return {day, std::strftime(day, std::size(day), "%Y-%m-%d", std::localtime(&now))};
}

}  // namespace

Report Rehearse(const std::string& profile, const FlightPlan& plan,
                const std::function<bool(double share)>& goesOn) {
    Tally flown = Fly(plan, goesOn);
    Report report = MakeReport(profile, plan, flown, OrdinaryFlight(plan, flown));
    report.Made = "FS2002 Quirkmeter " QUIRKMETER_VERSION ", " + Today();
    return report;
}

}  // namespace quirkmeter::rehearse
