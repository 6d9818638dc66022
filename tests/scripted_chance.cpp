#include "scripted_chance.h"

#include "model/random.h"

namespace quirkmeter {

std::int32_t RandomInRange(std::int32_t high, std::int32_t low) {
    return ScriptedDraw(high, low);
}

void ResetRandom() {}

}  // namespace quirkmeter
