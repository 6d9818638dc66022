// The flights of a rehearsal: how long, how many, in which aircraft.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "model/failure_range.h"

namespace quirkmeter::rehearse {

struct FlightPlan {
    double Hours = 2;              // from take-off to landing, 0.01 to 1000
    std::int64_t Flights = 10000;  // from 1
    std::int64_t Engines = 2;      // of the aircraft, 0 to 4
    // Landing gear and flaps are up between these two, in minutes.
    double RetractedAfterTakeOff = 1;
    double ExtendedBeforeLanding = 10;
    std::uint64_t Seed = 0;  // the same seed gives the same flights
};

/// The draw steps of one flight, numbered from 1 to All. Gear and flaps are up from FirstUp to
/// LastUp; never, if LastUp is the smaller one.
struct FlightSteps {
    int All, FirstUp, LastUp;

    bool GearUp(int step) const { return FirstUp <= step && step <= LastUp; }
    int CountUp() const { return std::max(0, LastUp - FirstUp + 1); }
};

inline FlightSteps StepsOf(const FlightPlan& plan) {
    double stepsPerMinute = DrawStepsPerHour / 60.0;
    double all = plan.Hours * DrawStepsPerHour;
    double firstUp = std::ceil(plan.RetractedAfterTakeOff * stepsPerMinute);
    double firstDown = std::ceil(all - plan.ExtendedBeforeLanding * stepsPerMinute);
    return {.All = static_cast<int>(all),
            .FirstUp = std::max(1, static_cast<int>(firstUp)),
            .LastUp = static_cast<int>(firstDown) - 1};
}

}  // namespace quirkmeter::rehearse
