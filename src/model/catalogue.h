// The built-in table of everything that can fail: seven systems and their 62 sub-systems, each with
// the simulator variable that its failure acts on, and the state that changes during a flight.
#pragma once

#include <cstdint>
#include <string_view>

#include "model/number_text.h"

namespace quirkmeter {

/// The effect of a failure on its simulator variable.
enum class FailureMode {
    None = 0,
    Disconnect = 1,  // one bit of a byte shared by four controls, written while any is failed
    Hold = 2,        // written at every tick; clearing writes nothing
    Flag = 3,        // a one-byte flag written at every tick; clearing writes 0
    Leak = 4,        // a tank level lowered at every tick
    Stall = 5,       // written once; the failure ends by itself
};

struct SubsystemEntry {
    std::string_view Name;  // empty: no such sub-system
    std::int32_t Offset = 0;
    std::int32_t FailValue = 0;
    std::int32_t Size = 0;  // bytes: 1, 2 or 4
    FailureMode Mode = FailureMode::None;
    std::int32_t Engine = 0;  // 1 to 4, 0 for none

    NumericText Reliability;  // percent, 0 to 100; "100" cannot fail
    NumericText Hours;        // hours of flight in one period, 0 to 999
    bool Failed = false;

    // A draw r from 0 to 100000 means failure when RangeLow <= r < RangeHigh.
    std::int32_t RangeLow = 0;
    std::int32_t RangeHigh = 0;
    std::int32_t DrawAt = 0;   // the draw step of the period at which the draw is made, from 1
    std::int32_t Elapsed = 0;  // draw steps counted in this period
};

/// The variables of flaps and landing gear, the two sub-systems that can only fail while retracted.
inline constexpr std::int32_t FlapsOffset = 0x0BDC;
inline constexpr std::int32_t GearOffset = 0x0BE8;

inline bool IsRetractable(const SubsystemEntry& entry) {
    return entry.Offset == FlapsOffset || entry.Offset == GearOffset;
}

inline constexpr int SystemSlots = 8;
inline constexpr int SubsystemSlots = 15;

/// Systems and sub-systems are numbered from 1. System 8 and sub-system 15 have no name and end
/// every walk within the table.
extern SubsystemEntry Catalogue[SystemSlots + 1][SubsystemSlots + 1];

/// Short names by system number, from 1.
extern std::string_view SystemNames[SystemSlots + 1];

/// Titles as the systems list shows them, by system number from 1, each with a leading blank.
inline constexpr std::string_view SystemTitles[] = {
    "", " Autopilot", " Control", " Electrical", " Engine", " Fuel", " Instrument", " Radio"};

/// Fills the table: names and variables, and the defaults of a sub-system that never fails.
void BuildCatalogue();

/// Walks every named entry in scan order: systems from 1 until one without a first sub-system, and
/// in each its sub-systems from 1 until the first without a name. `visit(system, subsystem,
/// entry)`.
template <typename Visit>
void ForEachSubsystem(Visit visit) {
    for (int s = 1; s <= SystemSlots && !Catalogue[s][1].Name.empty(); ++s)
        for (int n = 1; n <= SubsystemSlots && !Catalogue[s][n].Name.empty(); ++n)
            visit(s, n, Catalogue[s][n]);
}

/// The number of sub-systems of the system; 0 for a system that does not exist.
int SubsystemCount(int system);

}  // namespace quirkmeter
