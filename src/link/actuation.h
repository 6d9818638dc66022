// Applies the failures of the list in the simulator, keeps them in force and undoes them.
#pragma once

#include <cstdint>

#include "model/catalogue.h"

namespace quirkmeter {

/// The bits of the control-disconnection byte that are in force: elevator, aileron, rudder,
/// throttle.
inline bool DisconnectFlags[4] = {};

/// The ticks from the beginning of a stall to its end.
inline constexpr std::int32_t StallTicks = 30;

/// The one place that knows how a catalogue value becomes bytes in the simulator. `size` is 1, 2 or
/// 4, and 1 for Disconnect. Only queues; returns the result code of the SimWrite.
std::int32_t WriteFailureValue(std::int32_t offset, std::int32_t state, std::int32_t size,
                               FailureMode mode, std::int32_t engine);

/// Writes every active failure in one batch, plus one batch per leak, which must see its tank's
/// level before it lowers it. Counts stalls down and drains tanks; may remove rows. Sends nothing
/// when nothing is failed. Once in every tick that could read the simulator.
void MaintainFailures();

/// Undoes one failure where its mode allows and removes its row. Does nothing without such a row.
void ClearFailure(int system, int subsystem);

/// Clears all, recomputes the failure ranges, refreshes the list and, unless quiet, plays the ok
/// sound. Refused under the Hardcore lock.
void ClearAllFailures(bool quiet);

/// Clears the newest, refreshes the list and plays the ok sound. Refused under the Hardcore lock.
void ClearLastFailure();

/// Moves the aircraft to latitude 0, longitude 0, altitude 0.
void ZeroAircraftPosition();

}  // namespace quirkmeter
