// Flies a plan in simulated time, with the program's own draw of failures.
#pragma once

#include <functional>

#include "rehearse/flight_plan.h"
#include "rehearse/tally.h"

namespace quirkmeter::rehearse {

/// Flies the plan with the reliabilities of the catalogue and counts what happened. Asks
/// `goesOn(share)` after a flight, at most twenty times a second, with the share of the flights
/// flown so far; when it says no, the tally is that of the flights so far. There must be no failure
/// in force, and there is none afterwards.
Tally Fly(const FlightPlan& plan, const std::function<bool(double share)>& goesOn);

}  // namespace quirkmeter::rehearse
