#include "rehearse/exact.h"

#include <algorithm>
#include <cmath>

namespace quirkmeter::rehearse {

namespace {

constexpr int StepsPerHour = 3600 / SecondsPerDrawStep;
constexpr std::int32_t GearOffset = 0x0BE8;
constexpr std::int32_t FlapsOffset = 0x0BDC;

// A draw is one of 100001 numbers, of which a thousand for each percent below 100 mean failure; a
// reliability has three decimals at most, so only the rounding of the last half is left to say.
double ChanceOfDraw(double reliability) {
    double half = static_cast<float>((100 - reliability) * 500);
    return (std::floor(50000.5 + half) - std::floor(50000.5 - half)) / 100001;
}

// The draw steps in which the sub-system's periods run.
int CountedSteps(const SubsystemEntry& entry, const FlightPlan& plan) {
    if (entry.Engine > plan.Engines) return 0;
    int steps = DrawSteps(plan);
    if (entry.Offset != GearOffset && entry.Offset != FlapsOffset) return steps;
    int counted = 0;
    for (int step = 1; step <= steps; ++step) counted += Retracted(plan, step);
    return counted;
}

}  // namespace

double ExactChance(const SubsystemEntry& entry, const FlightPlan& plan) {
    double reliability = entry.Reliability.ValueOr(100);
    if (reliability >= 100) return 0;
    double hours = entry.Hours.ValueOr(1);
    double draw = ChanceOfDraw(reliability);
    // A draw comes at one of these steps of a period, which may be shorter or longer by a rounding.
    double drawSteps = std::fmax(1, std::nearbyint(hours * StepsPerHour));
    int period = 1;
    while (static_cast<double>(period) / StepsPerHour < hours) ++period;

    int counted = CountedSteps(entry, plan);
    double rest = std::fmin(counted % period, drawSteps);
    return 1 - std::pow(1 - draw, counted / period) * (1 - draw * rest / drawSteps);
}

double ExactChanceOfNoFailure(const FlightPlan& plan) {
    double chance = 1;
    ForEachSubsystem(
        [&](int, int, const SubsystemEntry& entry) { chance *= 1 - ExactChance(entry, plan); });
    return chance;
}

}  // namespace quirkmeter::rehearse
