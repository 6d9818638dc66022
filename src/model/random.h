// The program's chance.
#pragma once

#include <cstdint>

namespace quirkmeter {

/// A whole number from `low` to `high`, both inclusive, each as likely as the next. `high` is at
/// least `low` - 1; where it is just that, the result is `low`. Re-seeds from the clock at every
/// call; within one clock reading the sequence goes on.
std::int32_t RandomInRange(std::int32_t high, std::int32_t low);

/// Back to the beginning, where every run starts.
void ResetRandom();

/// Starts the sequence of that number. From now on nothing is seeded from the clock: the same number
/// gives the same draws.
void StartSequence(std::uint64_t number);

}  // namespace quirkmeter
