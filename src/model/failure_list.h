// The failures in force, in the order in which they occurred.
//
// A sub-system's Failed is set exactly when one row holds its numbers, and no pair stands in two
// rows; so the 62 sub-systems never fill the 100 rows.
#pragma once

#include <cstdint>

namespace quirkmeter {

struct FailureRow {
    std::int32_t System = 0;     // 1 to 7; 0 in a row not in use
    std::int32_t SubSystem = 0;  // from 1; 0 in a row not in use
    // A stall: ticks left until it ends by itself. A leak: what the tank loses at each tick.
    // Negative: not started. Every other mode leaves it so.
    std::int32_t Counter = NotStarted;

    static constexpr std::int32_t NotStarted = -1;
    bool Started() const { return Counter != NotStarted; }
    bool operator==(const FailureRow&) const = default;
};

inline constexpr int FailureListRows = 100;

/// Rows are numbered from 1; rows 1 (the oldest) to FailureCount (the newest) are in use.
extern FailureRow FailureList[FailureListRows + 1];
extern std::int32_t FailureCount;
/// FailureCount as the engine last finished a tick.
extern std::int32_t LastFailureCount;

/// Marks the sub-system failed and appends its row. Its Failed must be false. Nothing is written to
/// the simulator here.
void AddFailure(int system, int subsystem);

/// The newest row that holds the pair; 0 when none does.
int FindFailure(int system, int subsystem);

/// Clears the sub-system's Failed and removes row `row` (1 to FailureCount); later rows move up.
void RemoveFailureRow(int row);

}  // namespace quirkmeter
