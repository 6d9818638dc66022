#include "engine/failure_draw.h"

#include <cmath>

#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/random.h"

namespace quirkmeter {

namespace {

constexpr std::int32_t DrawMax = 100000;
constexpr double StepsPerHour = 360;
constexpr std::int32_t GearOffset = 0x0BE8;
constexpr std::int32_t FlapsOffset = 0x0BDC;

// The texts come from the program's own conversions; one that is no number counts as the default.
double Reliability(const SubsystemEntry& entry) {
    return entry.Reliability.ValueOr(100);
}

double Hours(const SubsystemEntry& entry) {
    return entry.Hours.ValueOr(1);
}

std::int32_t RandomDrawAt(double hours) {
    auto steps = static_cast<std::int32_t>(std::nearbyint(hours * StepsPerHour));
    return RandomInRange(steps, 1);
}

void StartPeriod(SubsystemEntry& entry, double hours) {
    entry.DrawAt = RandomDrawAt(hours);
    entry.Elapsed = 0;
}

void ComputeFailureRange(SubsystemEntry& entry) {
    // In single precision, in which 99.999 % leaves a range one wide; in double it would leave none.
    auto halfWidth = static_cast<float>((100 - Reliability(entry)) / 100 * DrawMax / 2);
    auto low = static_cast<std::int32_t>(std::floor(50000.5 - halfWidth));
    auto high = static_cast<std::int32_t>(std::floor(halfWidth + 50000.5));
    // Where in the draw's range the failure range lies is chance too; its width is not.
    std::int32_t shift =
        RandomInRange(2, 1) == 1 ? -RandomInRange(low, 0) : RandomInRange(DrawMax - high, 0);
    entry.RangeLow = low + shift;
    entry.RangeHigh = high + shift;
    entry.DrawAt = RandomDrawAt(Hours(entry));
}

bool DrawFails(const SubsystemEntry& entry) {
    std::int32_t r = RandomInRange(DrawMax, 0);
    return entry.RangeLow <= r && r < entry.RangeHigh;
}

}  // namespace

void ComputeFailureRanges() {
    ForEachSubsystem([](int, int, SubsystemEntry& entry) { ComputeFailureRange(entry); });
}

void DrawStep(std::int32_t gear, std::int32_t flaps) {
    ForEachSubsystem([gear, flaps](int s, int n, SubsystemEntry& entry) {
        if (Reliability(entry) >= 100) return;
        double hours = Hours(entry);
        if ((entry.Offset == GearOffset && gear > 0) || (entry.Offset == FlapsOffset && flaps > 0))
            return StartPeriod(entry, hours);
        if (entry.Engine > EngineState.EngineCount) return;
        ++entry.Elapsed;
        if (entry.Elapsed == entry.DrawAt && DrawFails(entry) && !entry.Failed) AddFailure(s, n);
        double elapsedHours = entry.Elapsed / StepsPerHour;
        if (elapsedHours >= hours) StartPeriod(entry, hours);
    });
}

}  // namespace quirkmeter
