// The engine's state between ticks. A tick that cannot read the simulator leaves the values as they
// were.
#pragma once

#include <cstdint>
#include <string>

#include "model/settings.h"

namespace quirkmeter {

struct EngineStateRecord {
    bool Connected = false;         // the link is open and answered last time
    bool SimPaused = false;         // the simulation is paused
    bool Airborne = false;          // the aircraft is off the ground
    bool Deactivated = false;       // the user switched failure drawing off
    std::uint16_t EngineCount = 0;  // engines of the current aircraft
    std::int32_t DrawDivider = 0;   // operating ticks towards the next draw step, 0 to 9
    std::string StatusText;         // the status line in the making
    std::string LastShownStatus;    // the status line as the label shows it
};

inline EngineStateRecord EngineState;

/// No failures are drawn; those in force stay in force.
inline bool OnHold() {
    return EngineState.SimPaused || !EngineState.Airborne || EngineState.Deactivated;
}

/// Hardcore Mode in flight: every action that would avoid or undo failures is refused, without a
/// message or a sound.
inline bool HardcoreLock() {
    return Settings.HardcoreActive && EngineState.Airborne;
}

}  // namespace quirkmeter
