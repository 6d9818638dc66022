#include "rehearse/exact.h"

#include <algorithm>
#include <cmath>

#include "link/actuation.h"

namespace quirkmeter::rehearse {

namespace {

// A draw is one of 100001 numbers, and each percent below 100 makes a thousand of them failures.
// The failure range has two halves, which are rounded separately.
double ChanceOfDraw(double reliability) {
    double half = static_cast<float>((100 - reliability) * 500);
    return (std::floor(50000.5 + half) - std::floor(50000.5 - half)) / (MaxDraw + 1);
}

// The draw steps that end a period.
int StepsOfPeriod(double hours) {
    int steps = std::max(1, static_cast<int>(hours * DrawStepsPerHour) - 1);
    while (static_cast<double>(steps) / DrawStepsPerHour < hours) ++steps;
    return steps;
}

// The draws of a sub-system in a flight: one in each whole period, and perhaps one in the rest.
struct Draws {
    double Fails;  // the chance that one means failure
    int Whole;
    double InRest;  // the chance that the rest has one
    int PeriodSteps;
};

Draws DrawsOf(const SubsystemEntry& entry, const FlightPlan& plan) {
    if (ReliabilityOf(entry) >= 100 || entry.Engine > plan.Engines) return {0, 0, 0, 1};
    FlightSteps steps = StepsOf(plan);
    int counted = IsRetractable(entry) ? steps.CountUp() : steps.All;
    double hours = HoursOf(entry);
    int period = StepsOfPeriod(hours);
    // Chance chooses the draw from this many steps. Rounding may make the number differ from the
    // steps of the period.
    double drawSteps = std::fmax(1, std::nearbyint(hours * DrawStepsPerHour));
    return {ChanceOfDraw(ReliabilityOf(entry)), counted / period,
            std::fmin(counted % period, drawSteps) / drawSteps, period};
}

}  // namespace

double ExactChance(const SubsystemEntry& entry, const FlightPlan& plan) {
    Draws draws = DrawsOf(entry, plan);
    return 1 - std::pow(1 - draws.Fails, draws.Whole) * (1 - draws.Fails * draws.InRest);
}

double ExactChanceOfSystem(int system, const FlightPlan& plan) {
    double none = 1;
    for (int n = 1; n <= SubsystemCount(system); ++n)
        none *= 1 - ExactChance(Catalogue[system][n], plan);
    return 1 - none;
}

double ExactFailures(const FlightPlan& plan) {
    double failures = 0;
    ForEachSubsystem([&](int, int, const SubsystemEntry& entry) {
        if (entry.Mode != FailureMode::Stall) {
            failures += ExactChance(entry, plan);
            return;
        }
        Draws draws = DrawsOf(entry, plan);
        // With a draw at every step, the draws during a stall have no effect.
        double missed = draws.PeriodSteps == 1 ? StallTicks / TicksPerDrawStep : 0;
        failures += (draws.Whole + draws.InRest) * draws.Fails / (1 + missed * draws.Fails);
    });
    return failures;
}

double ExactChanceOfNoFailure(const FlightPlan& plan) {
    double chance = 1;
    ForEachSubsystem(
        [&](int, int, const SubsystemEntry& entry) { chance *= 1 - ExactChance(entry, plan); });
    return chance;
}

}  // namespace quirkmeter::rehearse
