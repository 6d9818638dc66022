// The program's random numbers.
#pragma once

#include <cstdint>

namespace quirkmeter {

/// A whole number from `low` to `high`, both inclusive, each as likely as the next. `high` is at
/// least `low` - 1; where it is just that, the result is `low`. Re-seeds from the clock at every
/// call; within one clock reading the sequence goes on.
std::int32_t RandomInRange(std::int32_t high, std::int32_t low);

/// Resets chance to the state at the start of the program.
void ResetRandom();

/// Starts the sequence of that seed, and stops seeding from the clock: the same seed gives the same
/// draws.
void StartSequence(std::uint64_t number);

}  // namespace quirkmeter
