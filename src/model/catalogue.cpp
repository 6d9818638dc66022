#include "model/catalogue.h"

#include <algorithm>
#include <iterator>

namespace quirkmeter {

SubsystemEntry Catalogue[SystemSlots + 1][SubsystemSlots + 1];
std::string_view SystemNames[SystemSlots + 1];

namespace {

struct Definition {
    int System, Subsystem;
    std::string_view Name;
    std::int32_t Offset, FailValue, Size;
    FailureMode Mode;
    std::int32_t Engine;
};

// clang-format off
constexpr Definition Definitions[] = {
    {1, 1, "Airspeed", 0x07DC, 0, 4, FailureMode::Hold, 0},
    {1, 2, "Altitude", 0x07D0, 0, 4, FailureMode::Hold, 0},
    {1, 3, "Approach", 0x0800, 0, 4, FailureMode::Hold, 0},
    {1, 4, "Attitude", 0x07D8, 0, 4, FailureMode::Hold, 0},
    {1, 5, "Autothrottle", 0x0810, 0, 4, FailureMode::Hold, 0},
    {1, 6, "Back Course", 0x0804, 0, 4, FailureMode::Hold, 0},
    {1, 7, "Glideslope", 0x07FC, 0, 4, FailureMode::Hold, 0},
    {1, 8, "Heading", 0x07C8, 0, 4, FailureMode::Hold, 0},
    {1, 9, "Mach", 0x07E4, 0, 4, FailureMode::Hold, 0},
    {1, 10, "Master", 0x07BC, 0, 4, FailureMode::Hold, 0},
    {1, 11, "Navigation", 0x07C4, 0, 4, FailureMode::Hold, 0},
    {1, 12, "Vertical Speed", 0x07EC, 0, 4, FailureMode::Hold, 0},
    {1, 13, "Wing Leveler", 0x07C0, 0, 4, FailureMode::Hold, 0},
    {1, 14, "Yaw Damper", 0x0808, 0, 4, FailureMode::Hold, 0},
    {2, 1, "Aileron", 0x310A, 2, 1, FailureMode::Disconnect, 0},
    {2, 2, "Elevator", 0x310A, 1, 1, FailureMode::Disconnect, 0},
    {2, 3, "Elevator Trim", 0x0BC0, 0, 2, FailureMode::Hold, 0},
    {2, 4, "Flaps", FlapsOffset, 0, 4, FailureMode::Hold, 0},
    {2, 5, "Landing Gear", GearOffset, 0, 4, FailureMode::Hold, 0},
    {2, 6, "Rudder", 0x310A, 4, 1, FailureMode::Disconnect, 0},
    {2, 7, "Throttle", 0x310A, 8, 1, FailureMode::Disconnect, 0},
    {3, 1, "Battery", 0x3102, 0, 1, FailureMode::Hold, 0},
    {3, 2, "Entire System", 0x0B6A, 1, 1, FailureMode::Flag, 0},
    {3, 3, "Alt/Gen (Engine 1)", 0x3B78, 0, 4, FailureMode::Hold, 1},
    {3, 4, "Alt/Gen (Engine 2)", 0x3AB8, 0, 4, FailureMode::Hold, 2},
    {3, 5, "Alt/Gen (Engine 3)", 0x39F8, 0, 4, FailureMode::Hold, 3},
    {3, 6, "Alt/Gen (Engine 4)", 0x3938, 0, 4, FailureMode::Hold, 4},
    {3, 7, "Master Avionics", 0x3103, 0, 1, FailureMode::Hold, 0},
    {4, 1, "Engine 1 (Fail)", 0x0B6B, 1, 1, FailureMode::Flag, 1},
    {4, 2, "Engine 1 (Stall)", 0x0890, 0, 2, FailureMode::Stall, 1},
    {4, 3, "Engine 2 (Fail)", 0x0B6B, 1, 1, FailureMode::Flag, 2},
    {4, 4, "Engine 2 (Stall)", 0x0928, 0, 2, FailureMode::Stall, 2},
    {4, 5, "Engine 3 (Fail)", 0x0B6B, 1, 1, FailureMode::Flag, 3},
    {4, 6, "Engine 3 (Stall)", 0x09C0, 0, 2, FailureMode::Stall, 3},
    {4, 7, "Engine 4 (Fail)", 0x0B6B, 1, 1, FailureMode::Flag, 4},
    {4, 8, "Engine 4 (Stall)", 0x0A58, 0, 2, FailureMode::Stall, 4},
    {5, 1, "Pump(s)", 0x3104, 0, 1, FailureMode::Hold, 0},
    {5, 2, "Tank Center (Leak)", 0x0B74, 0, 4, FailureMode::Leak, 0},
    {5, 3, "Tank Left (Leak)", 0x0B7C, 0, 4, FailureMode::Leak, 0},
    {5, 4, "Tank Left Aux (Leak)", 0x0B84, 0, 4, FailureMode::Leak, 0},
    {5, 5, "Tank Left Tip (Leak)", 0x0B8C, 0, 4, FailureMode::Leak, 0},
    {5, 6, "Tank Right (Leak)", 0x0B94, 0, 4, FailureMode::Leak, 0},
    {5, 7, "Tank Right Aux (Leak)", 0x0B9C, 0, 4, FailureMode::Leak, 0},
    {5, 8, "Tank Right Tip (Leak)", 0x0BA4, 0, 4, FailureMode::Leak, 0},
    {5, 9, "Tank Center 2 (Leak)", 0x1244, 0, 4, FailureMode::Leak, 0},
    {5, 10, "Tank Center 3 (Leak)", 0x124C, 0, 4, FailureMode::Leak, 0},
    {5, 11, "Tank External 1 (Leak)", 0x1254, 0, 4, FailureMode::Leak, 0},
    {5, 12, "Tank External 2 (Leak)", 0x125C, 0, 4, FailureMode::Leak, 0},
    {6, 1, "Airspeed", 0x0B65, 1, 1, FailureMode::Flag, 0},
    {6, 2, "Altimiter", 0x0B66, 1, 1, FailureMode::Flag, 0},
    {6, 3, "Attitude", 0x0B67, 1, 1, FailureMode::Flag, 0},
    {6, 4, "Fuel", 0x0B6C, 1, 1, FailureMode::Flag, 0},
    {6, 5, "Heading", 0x0B6D, 1, 1, FailureMode::Flag, 0},
    {6, 6, "Magnetic Compass", 0x0B69, 1, 1, FailureMode::Flag, 0},
    {6, 7, "Pitot Static", 0x0B71, 1, 1, FailureMode::Flag, 0},
    {6, 8, "Turn Coordinator", 0x0B72, 1, 1, FailureMode::Flag, 0},
    {6, 9, "Vacuum", 0x0B73, 1, 1, FailureMode::Flag, 0},
    {6, 10, "Vertical Speed", 0x0B6E, 1, 1, FailureMode::Flag, 0},
    {7, 1, "ADF", 0x0B64, 1, 1, FailureMode::Flag, 0},
    {7, 2, "COM", 0x0B68, 1, 1, FailureMode::Flag, 0},
    {7, 3, "NAV", 0x0B70, 1, 1, FailureMode::Flag, 0},
    {7, 4, "Transponder", 0x0B6F, 1, 1, FailureMode::Flag, 0},
};
// clang-format on

constexpr std::string_view ShortNames[] = {"",    "AP",   "Ctrl", "Elec",
                                           "Eng", "Fuel", "Inst", "Radio"};

}  // namespace

void BuildCatalogue() {
    std::copy(std::begin(ShortNames), std::end(ShortNames), std::begin(SystemNames));
    for (const Definition& d : Definitions) {
        SubsystemEntry& entry = Catalogue[d.System][d.Subsystem];
        entry = {};
        entry.Name = d.Name;
        entry.Offset = d.Offset;
        entry.FailValue = d.FailValue;
        entry.Size = d.Size;
        entry.Mode = d.Mode;
        entry.Engine = d.Engine;
        entry.Reliability = "100";
        entry.Hours = "1";
    }
}

int SubsystemCount(int system) {
    int n = 0;
    if (system >= 1 && system <= SystemSlots)
        while (n < SubsystemSlots && !Catalogue[system][n + 1].Name.empty()) ++n;
    return n;
}

}  // namespace quirkmeter
