// Profiles by wish: everything fails more or less often, until nothing fails in the share of flights
// that the pilot wants.
#pragma once

#include <string>

#include "rehearse/flight_plan.h"

namespace quirkmeter::rehearse {

/// Sets all systems of the catalogue but those of `names` ("instrument,radio") to a reliability of
/// 100. Returns the fault in `names`; nothing when there is none.
std::string KeepOnly(const std::string& names);

/// Makes everything in the catalogue that can fail do so k times as often, where k is chosen so that
/// nothing fails in `percent` (0 to 100) of the plan's flights, by calculation and within half a
/// percent point. Reliabilities and hours are entries of the reliability dialog's lists afterwards.
/// Returns why this is impossible, with the nearest percentage; nothing when it was met.
std::string MeetWish(double percent, const FlightPlan& plan);

}  // namespace quirkmeter::rehearse
