#include "rehearse/flight.h"

#include <algorithm>
#include <bitset>

#include "engine/connection.h"
#include "engine/failure_draw.h"
#include "link/actuation.h"
#include "link/sim_link.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/failure_range.h"
#include "model/random.h"
#include "platform/inprocess/inprocess.h"
#include "practice/request_block.h"
#include "rehearse/no_window.h"

namespace quirkmeter::rehearse {

namespace {

constexpr std::uint32_t ModuleVersionOffset = 0x3304;
constexpr std::uint32_t SimVersionOffset = 0x3308;
constexpr std::int32_t Extended = 16383;
constexpr std::uint64_t FullTank = 1 << 23;

NoWindow Window;

void StartFlight() {
    while (FailureCount > 0) RemoveFailureRow(FailureCount);
    ForEachSubsystem([](int, int, SubsystemEntry& entry) { entry.Elapsed = 0; });
    ComputeFailureRanges();
}

// A stall ends by itself after so many ticks, and its engine can then stall again.
bool StallInForce() {
    return std::any_of(FailureList + 1, FailureList + 1 + FailureCount, [](const FailureRow& row) {
        return Catalogue[row.System][row.SubSystem].Mode == FailureMode::Stall;
    });
}

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
            std::min<std::int64_t>(failures_, Tally::MostFailures))];
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

}  // namespace

std::int64_t Batches(const FlightPlan& plan) {
    return (plan.Flights + FlightsPerBatch - 1) / FlightsPerBatch;
}

RehearsalAircraft::RehearsalAircraft(const FlightPlan& plan) : plan_(plan) {
    // The clock has its part in chance, and must begin the same for all.
    platform::inprocess::Reset();
    TheMainWindow = &Window;
    space_.SetValue(ModuleVersionOffset, 4, 0x19980005);
    space_.SetValue(SimVersionOffset, 4, 0xFADE0007);
    module_ = platform::OwnWindow("UIPCMAIN", "", [this](auto, auto, auto) -> std::intptr_t {
        return practice::CarryOut(SimLink.View, BlockSize, space_,
                                  [](const practice::AppliedWrite&) {});
    });
    ConnectToSimulator(true);
    EngineState.EngineCount = static_cast<std::uint16_t>(plan.Engines);
}

RehearsalAircraft::~RehearsalAircraft() {
    SimClose();
    platform::DropWindow(module_);
    EngineState = {};
    TheMainWindow = nullptr;
}

void RehearsalAircraft::FlyBatch(std::int64_t batch, Tally& tally) {
    // Seeds of neighbouring plans share no batch.
    StartSequence(plan_.Seed * 0x9E3779B97F4A7C15 + static_cast<std::uint64_t>(batch));
    std::int64_t first = batch * FlightsPerBatch;
    for (auto n = std::min(FlightsPerBatch, plan_.Flights - first); n > 0; --n) Fly(tally);
}

void RehearsalAircraft::Fly(Tally& tally) {
    StartFlight();
    FillTanks();
    int steps = DrawSteps(plan_);
    FlightLog log(tally, steps);
    for (int step = 1; step <= steps; ++step) {
        std::int32_t position = Retracted(plan_, step) ? 0 : Extended;
        int failures = FailureCount;
        DrawStep(position, position);
        for (int row = failures + 1; row <= FailureCount; ++row) log.Write(FailureList[row], step);
        for (int tick = 0; tick < SecondsPerDrawStep && StallInForce(); ++tick) MaintainFailures();
    }
}

// A tank that is empty has no leak.
void RehearsalAircraft::FillTanks() {
    ForEachSubsystem([this](int, int, const SubsystemEntry& entry) {
        if (entry.Mode == FailureMode::Leak)
            space_.SetValue(static_cast<std::uint32_t>(entry.Offset), 4, FullTank);
    });
}

}  // namespace quirkmeter::rehearse
