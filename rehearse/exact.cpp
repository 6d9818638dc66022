#include "rehearse/exact.h"

#include <cmath>

namespace quirkmeter::rehearse {

namespace {

// A draw is one of 100001 numbers, of which a thousand for each percent below 100 mean failure; a
// reliability has three decimals at most, so only the rounding of the last half is left to say.
double ChanceOfDraw(double reliability) {
    double half = static_cast<float>((100 - reliability) * 500);
    return (std::floor(50000.5 + half) - std::floor(50000.5 - half)) / (MaxDraw + 1);
}

}  // namespace

double ExactChance(const SubsystemEntry& entry, const FlightPlan& plan) {
    if (ReliabilityOf(entry) >= 100 || entry.Engine > plan.Engines) return 0;
    FlightSteps steps = StepsOf(plan);
    int counted = IsRetractable(entry) ? steps.CountUp() : steps.All;
    double hours = HoursOf(entry);
    double draw = ChanceOfDraw(ReliabilityOf(entry));
    // A draw comes at one of these steps of a period, which may be shorter or longer by a rounding.
    double drawSteps = std::fmax(1, std::nearbyint(hours * DrawStepsPerHour));
    int period = 1;
    while (static_cast<double>(period) / DrawStepsPerHour < hours) ++period;

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
