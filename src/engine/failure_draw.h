// Chance: how reliabilities become failure ranges, and the draw that uses them.
#pragma once

#include <cstdint>

namespace quirkmeter {

/// Sets the failure range and the draw step of every sub-system from its reliability and hours. A
/// period under way goes on.
void ComputeFailureRanges();

/// One step of every sub-system's period: counts it and, at the step that chance chose, draws and
/// may add the failure. Gear and flaps restart their periods while they are out (their values,
/// `gear` and `flaps`, above 0).
void DrawStep(std::int32_t gear, std::int32_t flaps);

}  // namespace quirkmeter
