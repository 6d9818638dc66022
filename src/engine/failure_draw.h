// The draw that makes sub-systems fail.
#pragma once

#include <cstdint>

namespace quirkmeter {

/// One step of every sub-system's period: counts it and, at the step that chance chose, draws and
/// may add the failure. Gear and flaps restart their periods while they are out (their values,
/// `gear` and `flaps`, above 0).
void DrawStep(std::int32_t gear, std::int32_t flaps);

}  // namespace quirkmeter
