#include "engine/failure_draw.h"

#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/failure_range.h"
#include "model/random.h"

namespace quirkmeter {

namespace {

bool IsOut(const SubsystemEntry& entry, std::int32_t gear, std::int32_t flaps) {
    return (entry.Offset == GearOffset && gear > 0) || (entry.Offset == FlapsOffset && flaps > 0);
}

bool DrawFails(const SubsystemEntry& entry) {
    std::int32_t r = RandomInRange(MaxDraw, 0);
    return entry.RangeLow <= r && r < entry.RangeHigh;
}

}  // namespace

void DrawStep(std::int32_t gear, std::int32_t flaps) {
    ForEachSubsystem([gear, flaps](int s, int n, SubsystemEntry& entry) {
        if (ReliabilityOf(entry) >= 100) return;
        if (IsOut(entry, gear, flaps)) return StartPeriod(entry);
        if (entry.Engine > EngineState.EngineCount) return;
        ++entry.Elapsed;
        if (entry.Elapsed == entry.DrawAt && DrawFails(entry) && !entry.Failed) AddFailure(s, n);
        double elapsedHours = static_cast<double>(entry.Elapsed) / DrawStepsPerHour;
        if (elapsedHours >= HoursOf(entry)) StartPeriod(entry);
    });
}

}  // namespace quirkmeter
