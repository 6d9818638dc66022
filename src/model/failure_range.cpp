#include "model/failure_range.h"

#include <cmath>

#include "model/random.h"

namespace quirkmeter {

namespace {

std::int32_t RandomDrawAt(const SubsystemEntry& entry) {
    auto steps = static_cast<std::int32_t>(std::nearbyint(HoursOf(entry) * DrawStepsPerHour));
    return RandomInRange(steps, 1);
}

void ComputeFailureRange(SubsystemEntry& entry) {
    // In single precision: in double some reliabilities, such as 0.053 %, get a range one wider.
    auto halfWidth = static_cast<float>((100 - ReliabilityOf(entry)) / 100 * MaxDraw / 2);
    auto low = static_cast<std::int32_t>(std::floor(50000.5 - halfWidth));
    auto high = static_cast<std::int32_t>(std::floor(halfWidth + 50000.5));
    // The position of the range is random; its width is not.
    std::int32_t shift =
        RandomInRange(2, 1) == 1 ? -RandomInRange(low, 0) : RandomInRange(MaxDraw - high, 0);
    entry.RangeLow = low + shift;
    entry.RangeHigh = high + shift;
    entry.DrawAt = RandomDrawAt(entry);
}

}  // namespace

void ComputeFailureRanges() {
    ForEachSubsystem([](int, int, SubsystemEntry& entry) { ComputeFailureRange(entry); });
}

void StartPeriod(SubsystemEntry& entry) {
    entry.DrawAt = RandomDrawAt(entry);
    entry.Elapsed = 0;
}

}  // namespace quirkmeter
