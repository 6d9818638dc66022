// Flies a plan in simulated time, with the program's own draw of failures.
#pragma once

#include <functional>
#include <vector>

#include "rehearse/flight_plan.h"
#include "rehearse/tally.h"

namespace quirkmeter::rehearse {

/// Flies the plan with the reliabilities of the catalogue and counts what happened. Asks
/// `goesOn(share)` after a flight, at most twenty times a second, with the share of the flights
/// flown so far; when it says no, the tally is that of the flights so far. There must be no failure
/// in force, and there is none afterwards.
Tally Fly(const FlightPlan& plan, const std::function<bool(double share)>& goesOn);

/// A failure of one flight, at the end of that draw step.
struct FailureInFlight {
    int Step;
    int System, Subsystem;
};
using Flight = std::vector<FailureInFlight>;

/// An ordinary one of the flights that Fly has counted: as many failures as in the middle one of
/// those that have any. Empty when none has.
Flight OrdinaryFlight(const FlightPlan& plan, const Tally& flown);

}  // namespace quirkmeter::rehearse
