#include "engine/tick.h"

#include <optional>

#include "engine/connection.h"
#include "engine/failure_draw.h"
#include "engine/hotkeys.h"
#include "hardcore/companion.h"
#include "link/actuation.h"
#include "link/sim_link.h"
#include "link/sounds.h"
#include "link/status.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/failure_range.h"
#include "model/main_window.h"

namespace quirkmeter {

namespace {

// The values that one tick reads, beside the number of engines.
struct SimReadings {
    std::uint16_t Pause = 0;
    std::uint16_t OnGround = 0;
    std::int32_t Gear = 0;
    std::int32_t Flaps = 0;
};

std::optional<SimReadings> ReadSimulator() {
    SimReadings readings;
    std::int32_t result = 0;
    if (!SimRead(0x0AEC, 2, &EngineState.EngineCount, result)) return std::nullopt;
    SimRead(0x0264, 2, &readings.Pause, result);
    SimRead(0x0366, 2, &readings.OnGround, result);
    SimRead(GearOffset, 4, &readings.Gear, result);
    SimRead(FlapsOffset, 4, &readings.Flaps, result);
    if (!SimProcess(result)) return std::nullopt;
    return readings;
}

// False when the program is ending.
bool ApplyHardcoreRestriction() {
    TheMainWindow->ShowSubsystemList(!HardcoreLock());
    return !HardcoreLock() || CheckHardcoreCompanion();
}

void Operate(const SimReadings& readings) {
    if (++EngineState.DrawDivider < TicksPerDrawStep) return;
    EngineState.DrawDivider = 0;
    DrawStep(readings.Gear, readings.Flaps);
}

void NoticeFailureCount() {
    if (LastFailureCount != FailureCount) {
        TheMainWindow->RefreshSubsystems();
        if (Settings.PlayFailureSound && LastFailureCount < FailureCount)
            PlaySoundFile(SoundFailure);
    }
    LastFailureCount = FailureCount;
}

// False when the program is ending.
bool ConnectedTick() {
    auto readings = ReadSimulator();
    if (!readings) {
        PlaySoundFile(SoundWarning);
        SetDisconnected();
        return true;
    }
    EngineState.SimPaused = readings->Pause != 0;
    EngineState.Airborne = readings->OnGround == 0;
    if (!ApplyHardcoreRestriction()) return false;
    if (!OnHold()) Operate(*readings);
    MaintainFailures();
    NoticeFailureCount();
    DescribeFlight();
    return true;
}

}  // namespace

void EngineTick() {
    PollHotkeys();
    if (!EngineState.Connected)
        ConnectToSimulator(true);
    else if (!ConnectedTick())
        return;
    FinishStatus();
    ShowStatus(false);
}

}  // namespace quirkmeter
