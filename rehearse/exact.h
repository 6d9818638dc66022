// The chances of a flight by calculation, for comparison with flights that were flown.
#pragma once

#include "model/catalogue.h"
#include "rehearse/flight_plan.h"

namespace quirkmeter::rehearse {

/// The chance that the sub-system fails in a flight, once or more. Each period has one draw, at a
/// draw step that is as likely to be any of the period's.
double ExactChance(const SubsystemEntry& entry, const FlightPlan& plan);

/// The chance that one of the system's sub-systems fails in a flight.
double ExactChanceOfSystem(int system, const FlightPlan& plan);

/// The failures of a flight on average. A stall ends by itself and may come again.
double ExactFailures(const FlightPlan& plan);

/// The chance of a flight in which nothing of the catalogue fails.
double ExactChanceOfNoFailure(const FlightPlan& plan);

}  // namespace quirkmeter::rehearse
