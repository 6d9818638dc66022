#include "model/random.h"

#include <bit>

#include "platform/platform.h"

namespace quirkmeter {

namespace {

std::uint64_t State = 0;
std::uint32_t SeededWith = 0;
bool FollowsClock = true;

// SplitMix64, because seeding it is free. Most generators fill a table for each seed.
std::uint64_t NextBits() {
    State += 0x9E3779B97F4A7C15;
    std::uint64_t bits = (State ^ State >> 30) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
    return bits ^ bits >> 31;
}

// Mixes the old state into the new seed, so that the same second of another day gives another
// flight.
void SeedFromClock() {
    auto clock = std::bit_cast<std::uint32_t>(static_cast<float>(platform::SecondsSinceMidnight()));
    if (clock == SeededWith) return;
    SeededWith = clock;
    State = NextBits() ^ clock;
}

}  // namespace

std::int32_t RandomInRange(std::int32_t high, std::int32_t low) {
    if (FollowsClock) SeedFromClock();
    double r = static_cast<double>(NextBits() >> 11) * 0x1p-53;
    double width = static_cast<double>(high) - low + 1;
    return static_cast<std::int32_t>(static_cast<std::int64_t>(r * width) + low);
}

void ResetRandom() {
    State = 0;
    SeededWith = 0;
    FollowsClock = true;
}

void StartSequence(std::uint64_t number) {
    State = number;
    FollowsClock = false;
}

}  // namespace quirkmeter
