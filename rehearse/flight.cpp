#include "rehearse/flight.h"

#include <algorithm>
#include <bitset>
#include <chrono>

#include "engine/failure_draw.h"
#include "link/actuation.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/random.h"

namespace quirkmeter::rehearse {

namespace {

constexpr std::int32_t Up = 0;
constexpr std::int32_t Down = 16383;
constexpr std::chrono::milliseconds AskEvery{50};

// The place of the flight in Tally::ByFailures.
std::size_t PlaceOf(const Flight& flight) {
    return std::min<std::size_t>(flight.size(), Tally::MaxFailures);
}

void Count(const Flight& flight, int steps, Tally& tally) {
    constexpr std::size_t Places = SubsystemSlots + 1;
    std::bitset<SystemSlots + 1> systems;
    std::bitset<(SystemSlots + 1) * Places> subsystems;
    for (const FailureInFlight& failure : flight) {
        auto system = static_cast<std::size_t>(failure.System);
        auto subsystem = static_cast<std::size_t>(failure.Subsystem);
        std::size_t place = system * Places + subsystem;
        if (!systems[system]) ++tally.BySystem[system];
        if (!subsystems[place]) ++tally.BySubsystem[system][subsystem];
        systems.set(system);
        subsystems.set(place);
    }
    auto failures = static_cast<std::int64_t>(flight.size());
    ++tally.Flights;
    tally.Failures += failures;
    tally.SquaredFailures += failures * failures;
    ++tally.ByFailures[PlaceOf(flight)];
    if (flight.empty()) return;
    auto part = (flight.front().Step - 1) * std::int64_t{Tally::PartsOfFlight} / steps;
    ++tally.ByFirstFailure[static_cast<std::size_t>(part)];
}

void StartFlight() {
    ForEachSubsystem([](int, int, SubsystemEntry& entry) { entry.Elapsed = 0; });
    ComputeFailureRanges();
}

// Ends the stalls that end before this draw step, so that their engines can stall again. A stall
// ends StallTicks after the tick of its draw, and in that tick after the draw.
void EndStalls() {
    for (int i = FailureCount; i >= 1; --i) {
        FailureRow& row = FailureList[i];
        if (Catalogue[row.System][row.SubSystem].Mode != FailureMode::Stall) continue;
        std::int32_t left = (row.Started() ? row.Counter : StallTicks) - TicksPerDrawStep;
        if (left < 0)
            RemoveFailureRow(i);
        else
            row.Counter = left;
    }
}

void FlyOnce(const FlightSteps& steps, Flight& flight) {
    StartFlight();
    flight.clear();
    for (int step = 1; step <= steps.All; ++step) {
        EndStalls();
        int failures = FailureCount;
        std::int32_t position = steps.GearUp(step) ? Up : Down;
        DrawStep(position, position);
        for (int row = failures + 1; row <= FailureCount; ++row)
            flight.push_back({step, FailureList[row].System, FailureList[row].SubSystem});
    }
    while (FailureCount > 0) RemoveFailureRow(FailureCount);
}

void StartFlights(const FlightPlan& plan) {
    StartSequence(plan.Seed);
    EngineState.EngineCount = static_cast<std::uint16_t>(plan.Engines);
}

// The failures of the middle one of the flights that have any, as a place in Tally::ByFailures.
std::size_t MiddlePlace(const Tally& flown) {
    std::int64_t half = (flown.Flights - flown.ByFailures[0] + 1) / 2;
    std::size_t place = 0;
    while (half > 0) half -= flown.ByFailures[++place];
    return place;
}

}  // namespace

Tally Fly(const FlightPlan& plan, const std::function<bool(double share)>& goesOn) {
    StartFlights(plan);
    FlightSteps steps = StepsOf(plan);
    Tally tally;
    Flight flight;
    auto asked = std::chrono::steady_clock::now();
    while (tally.Flights < plan.Flights) {
        FlyOnce(steps, flight);
        Count(flight, steps.All, tally);
        auto now = std::chrono::steady_clock::now();
        if (now - asked < AskEvery) continue;
        asked = now;
        if (!goesOn(static_cast<double>(tally.Flights) / static_cast<double>(plan.Flights))) break;
    }
    return tally;
}

Flight OrdinaryFlight(const FlightPlan& plan, const Tally& flown) {
    Flight flight;
    std::size_t middle = MiddlePlace(flown);
    if (middle == 0) return flight;
    // The seed brings back the same flights, of which one has so many failures.
    StartFlights(plan);
    FlightSteps steps = StepsOf(plan);
    do FlyOnce(steps, flight);
    while (PlaceOf(flight) != middle);
    return flight;
}

}  // namespace quirkmeter::rehearse
