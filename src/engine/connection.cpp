#include "engine/connection.h"

#include "link/actuation.h"
#include "link/sim_link.h"
#include "link/sounds.h"
#include "model/engine_state.h"

namespace quirkmeter {

void ConnectToSimulator(bool quiet) {
    if (Engine.Connected) return;
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
    Engine.Connected = true;
    Engine.StatusText = "Connected";
}

void SetDisconnected() {
    Engine.Connected = false;
    ClearAllFailures(true);
    Engine.StatusText = "FSUIPC - No connection to Flight Simulator.";
}

}  // namespace quirkmeter
