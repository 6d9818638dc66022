// Failure ranges and draw steps, computed from the reliabilities. Code that changes a reliability or
// its hours must call ComputeFailureRanges afterwards.
#pragma once

#include "model/catalogue.h"

namespace quirkmeter {

/// Flight time is counted in draw steps, one for every ten ticks of a second in operation.
inline constexpr int TicksPerDrawStep = 10;
inline constexpr int DrawStepsPerHour = 3600 / TicksPerDrawStep;

/// The largest draw; the smallest is 0.
inline constexpr std::int32_t MaxDraw = 100000;

/// The entry's reliability in percent and the hours of its period. A text that is no number counts
/// as the default, 100 percent and one hour.
inline double ReliabilityOf(const SubsystemEntry& entry) {
    return entry.Reliability.ValueOr(100);
}
inline double HoursOf(const SubsystemEntry& entry) {
    return entry.Hours.ValueOr(1);
}

/// Sets the failure range and the draw step of every sub-system from its reliability and hours.
/// Periods under way continue.
void ComputeFailureRanges();

/// Begins a period of the sub-system: nothing is counted, and chance chooses its draw step.
void StartPeriod(SubsystemEntry& entry);

}  // namespace quirkmeter
