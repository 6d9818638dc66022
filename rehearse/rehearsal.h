// A whole rehearsal, from the first flight to the report.
#pragma once

#include <functional>
#include <string>

#include "rehearse/flight_plan.h"
#include "rehearse/report.h"

namespace quirkmeter::rehearse {

/// Flies the plan, as Fly does, with the reliabilities of the catalogue and reports what happened.
/// `profile` is the name of the profile's file, in UTF-8.
Report Rehearse(const std::string& profile, const FlightPlan& plan,
                const std::function<bool(double share)>& goesOn);

}  // namespace quirkmeter::rehearse
