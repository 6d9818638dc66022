// Chance under a test's control, linked in the place of the program's own.
#pragma once

#include <cstdint>
#include <functional>

namespace quirkmeter {

/// Answers every call of RandomInRange. Must be set before the first.
inline std::function<std::int32_t(std::int32_t high, std::int32_t low)> ScriptedDraw;

}  // namespace quirkmeter
