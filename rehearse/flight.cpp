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

// What one flight adds to a tally.
class FlightLog {
   public:
    FlightLog(Tally& tally, int steps) : tally_(tally), steps_(steps) { ++tally_.Flights; }

    void Write(const FailureRow& row, int step) {
        auto system = static_cast<std::size_t>(row.System);
        auto subsystem = static_cast<std::size_t>(row.SubSystem);
        if (failures_++ == 0) ++tally_.ByFirstFailure[PartOfFlight(step)];
        if (!systems_[system]) ++tally_.BySystem[system];
        systems_.set(system);
        std::size_t place = system * Places + subsystem;
        if (!subsystems_[place]) ++tally_.BySubsystem[system][subsystem];
        subsystems_.set(place);
    }

    ~FlightLog() {
        tally_.Failures += failures_;
        tally_.SquaredFailures += failures_ * failures_;
        ++tally_.ByFailures[static_cast<std::size_t>(
            std::min<std::int64_t>(failures_, Tally::MaxFailures))];
    }
    FlightLog(const FlightLog&) = delete;

   private:
    static constexpr std::size_t Places = SubsystemSlots + 1;

    std::size_t PartOfFlight(int step) const {
        return static_cast<std::size_t>((step - 1) * std::int64_t{Tally::PartsOfFlight} / steps_);
    }

    Tally& tally_;
    int steps_;
    std::int64_t failures_ = 0;
    std::bitset<SystemSlots + 1> systems_;
    std::bitset<(SystemSlots + 1) * Places> subsystems_;
};

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

void FlyOnce(const FlightSteps& steps, Tally& tally) {
    StartFlight();
    FlightLog log(tally, steps.All);
    for (int step = 1; step <= steps.All; ++step) {
        EndStalls();
        int failures = FailureCount;
        std::int32_t position = steps.GearUp(step) ? Up : Down;
        DrawStep(position, position);
        for (int row = failures + 1; row <= FailureCount; ++row) log.Write(FailureList[row], step);
    }
    while (FailureCount > 0) RemoveFailureRow(FailureCount);
}

}  // namespace

Tally Fly(const FlightPlan& plan, const std::function<bool(double share)>& goesOn) {
    StartSequence(plan.Seed);
    EngineState.EngineCount = static_cast<std::uint16_t>(plan.Engines);
    FlightSteps steps = StepsOf(plan);
    Tally tally;
    auto asked = std::chrono::steady_clock::now();
    while (tally.Flights < plan.Flights) {
        FlyOnce(steps, tally);
        auto now = std::chrono::steady_clock::now();
        if (now - asked < AskEvery) continue;
        asked = now;
        if (!goesOn(static_cast<double>(tally.Flights) / static_cast<double>(plan.Flights))) break;
    }
    return tally;
}

}  // namespace quirkmeter::rehearse
