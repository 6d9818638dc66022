// What is flown in a rehearsal.
#pragma once

#include <cstdint>

namespace quirkmeter::rehearse {

struct FlightPlan {
    double Hours = 2;              // from take-off to landing, 0.01 to 1000
    std::int64_t Flights = 10000;  // from 1
    int Engines = 2;               // of the aircraft, 0 to 4
    // Landing gear and flaps are up between these two, in minutes.
    double RetractedAfterTakeOff = 1;
    double ExtendedBeforeLanding = 10;
    std::uint64_t Seed = 0;  // the same one brings back the same flights
};

/// A draw step comes with every tenth tick, a tick every second.
inline constexpr int SecondsPerDrawStep = 10;

/// The draw steps of one flight, numbered from 1.
inline int DrawSteps(const FlightPlan& plan) {
    return static_cast<int>(plan.Hours * 3600 / SecondsPerDrawStep);
}

/// Landing gear and flaps are up at that draw step.
inline bool Retracted(const FlightPlan& plan, int step) {
    double minute = step * SecondsPerDrawStep / 60.0;
    return minute >= plan.RetractedAfterTakeOff &&
           minute < plan.Hours * 60 - plan.ExtendedBeforeLanding;
}

}  // namespace quirkmeter::rehearse
