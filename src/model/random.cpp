#include "model/random.h"

#include <bit>
#include <random>

#include "platform/platform.h"

namespace quirkmeter {

namespace {

std::mt19937_64 Generator;
std::uint32_t SeededWith = 0;

// What the sequence has come to is mixed with the clock, so that the same second of another day
// does not bring back the same flight.
void SeedFromClock() {
    auto clock = std::bit_cast<std::uint32_t>(static_cast<float>(platform::SecondsSinceMidnight()));
    if (clock == SeededWith) return;
    SeededWith = clock;
    Generator.seed(Generator() ^ clock);
}

}  // namespace

std::int32_t RandomInRange(std::int32_t high, std::int32_t low) {
    SeedFromClock();
    double r = std::generate_canonical<double, 53>(Generator);
    double width = static_cast<double>(high) - low + 1;
    return static_cast<std::int32_t>(static_cast<std::int64_t>(r * width) + low);
}

void ResetRandom(std::uint64_t sequence) {
    Generator.seed(std::mt19937_64::default_seed + sequence);
    SeededWith = 0;
}

}  // namespace quirkmeter
