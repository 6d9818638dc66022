#include "engine/connection.h"

#include "link/actuation.h"
#include "link/sim_link.h"
#include "link/sounds.h"
#include "link/status.h"
#include "model/engine_state.h"

namespace quirkmeter {

void ConnectToSimulator(bool quiet) {
    if (EngineState.Connected) return;
    SimClose();
    SimInit();
    std::int32_t result = 0;
    if (SimOpen(0, result)) {
        PlaySoundFile(SoundOk);
        SetConnected();
    } else {
        if (!quiet) PlaySoundFile(SoundWarning);
        SetDisconnected();
    }
}

void SetConnected() {
    EngineState.Connected = true;
    DescribeConnection();
}

void SetDisconnected() {
    EngineState.Connected = false;
    ClearAllFailures(true);
    DescribeConnection();
}

}  // namespace quirkmeter
