// Profiles by wish: everything fails more or less often, until nothing fails in the share of flights
// that the pilot wants.
#pragma once

#include <bitset>
#include <string>

#include "model/catalogue.h"
#include "rehearse/flight_plan.h"

namespace quirkmeter::rehearse {

using SystemSet = std::bitset<SystemSlots + 1>;  // by their numbers in the catalogue

/// Reads names, as in "instrument,radio", into the set. Returns the fault in them; nothing when
/// there is none.
std::string ReadSystems(const std::string& names, SystemSet& systems);

/// Sets all sub-systems of other systems to a reliability of 100.
void KeepOnly(const SystemSet& systems);

/// Makes everything in the catalogue that can fail do so k times as often, where k is chosen so that
/// nothing fails in `percent` (0 to 100) of the plan's flights, by calculation and within half a
/// percent point. Reliabilities and hours are entries of the reliability dialog's lists afterwards.
/// Returns why this is impossible, with the nearest percentage; nothing when it was met.
std::string MeetWish(double percent, const FlightPlan& plan);

}  // namespace quirkmeter::rehearse
