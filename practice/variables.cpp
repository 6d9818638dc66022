#include "practice/variables.h"

#include <algorithm>

namespace quirkmeter::practice {

namespace {

using enum VariableKind;

constexpr Variable Table[] = {
    {0x07DC, 4, Autopilot, "Airspeed"},
    {0x07D0, 4, Autopilot, "Altitude"},
    {0x0800, 4, Autopilot, "Approach"},
    {0x07D8, 4, Autopilot, "Attitude"},
    {0x0810, 4, Autopilot, "Autothrottle"},
    {0x0804, 4, Autopilot, "Back Course"},
    {0x07FC, 4, Autopilot, "Glideslope"},
    {0x07C8, 4, Autopilot, "Heading"},
    {0x07E4, 4, Autopilot, "Mach"},
    {0x07BC, 4, Autopilot, "Master"},
    {0x07C4, 4, Autopilot, "Navigation"},
    {0x07EC, 4, Autopilot, "Vertical Speed"},
    {0x07C0, 4, Autopilot, "Wing Leveler"},
    {0x0808, 4, Autopilot, "Yaw Damper"},
    {0x0BC0, 2, Control, "Elevator Trim"},
    {offset::Flaps, 4, Control, "Flaps"},
    {offset::Gear, 4, Control, "Landing Gear"},
    {offset::Disconnection, 1, Disconnection, "Controls"},
    {0x3102, 1, Electrical, "Battery"},
    {0x3B78, 4, Electrical, "Alt/Gen (Engine 1)"},
    {0x3AB8, 4, Electrical, "Alt/Gen (Engine 2)"},
    {0x39F8, 4, Electrical, "Alt/Gen (Engine 3)"},
    {0x3938, 4, Electrical, "Alt/Gen (Engine 4)"},
    {0x3103, 1, Electrical, "Master Avionics"},
    {0x0B6A, 1, SystemFailure, "Entire System"},
    {offset::EngineFailures, 1, EngineFailure, "Engines"},
    {0x0890, 2, Lever, "Engine 1"},
    {0x0928, 2, Lever, "Engine 2"},
    {0x09C0, 2, Lever, "Engine 3"},
    {0x0A58, 2, Lever, "Engine 4"},
    {0x3104, 1, Pump, "Pump(s)"},
    {0x0B74, 4, Tank, "Center"},
    {0x0B7C, 4, Tank, "Left"},
    {0x0B84, 4, Tank, "Left Aux"},
    {0x0B8C, 4, Tank, "Left Tip"},
    {0x0B94, 4, Tank, "Right"},
    {0x0B9C, 4, Tank, "Right Aux"},
    {0x0BA4, 4, Tank, "Right Tip"},
    {0x1244, 4, Tank, "Center 2"},
    {0x124C, 4, Tank, "Center 3"},
    {0x1254, 4, Tank, "External 1"},
    {0x125C, 4, Tank, "External 2"},
    {0x0B65, 1, Instrument, "Airspeed"},
    {0x0B66, 1, Instrument, "Altimiter"},
    {0x0B67, 1, Instrument, "Attitude"},
    {0x0B6C, 1, Instrument, "Fuel"},
    {0x0B6D, 1, Instrument, "Heading"},
    {0x0B69, 1, Instrument, "Magnetic Compass"},
    {0x0B71, 1, Instrument, "Pitot Static"},
    {0x0B72, 1, Instrument, "Turn Coordinator"},
    {0x0B73, 1, Instrument, "Vacuum"},
    {0x0B6E, 1, Instrument, "Vertical Speed"},
    {0x0B64, 1, Radio, "ADF"},
    {0x0B68, 1, Radio, "COM"},
    {0x0B70, 1, Radio, "NAV"},
    {0x0B6F, 1, Radio, "Transponder"},
    {offset::Pause, 2, State, "Pause"},
    {offset::OnGround, 2, State, "On Ground"},
    {offset::Latitude, 4, State, "Latitude, low half"},
    {offset::Latitude + 4, 4, State, "Latitude, high half"},
    {offset::Longitude, 4, State, "Longitude, low half"},
    {offset::Longitude + 4, 4, State, "Longitude, high half"},
    {offset::Altitude, 4, State, "Altitude, low half"},
    {offset::Altitude + 4, 4, State, "Altitude, high half"},
    {offset::Slew, 2, State, "Slew"},
    {offset::Engines, 2, State, "Number of Engines"},
    {offset::ModuleVersion, 4, State, "Module Version"},
    {offset::SimulatorVersion, 4, State, "Simulator Version"},
    {offset::MessageText, 128, MessageText, "Message Text"},
    {0x32FA, 2, MessageSeconds, "Message Seconds"},
};

const char* KindName(VariableKind kind) {
    switch (kind) {
        case Autopilot:
            return "autopilot switch";
        case Control:
            return "control";
        case Disconnection:
            return "disconnection bits";
        case Electrical:
            return "electrical switch";
        case EngineFailure:
            return "failure bits";
        case SystemFailure:
        case Instrument:
        case Radio:
            return "failure flag";
        case Lever:
            return "lever";
        case Pump:
            return "fuel switch";
        case Tank:
            return "tank level";
        case State:
        case MessageText:
        case MessageSeconds:
            break;
    }
    return nullptr;
}

}  // namespace

std::span<const Variable> Variables() {
    return Table;
}

std::span<const Variable> VariablesOf(VariableKind kind) {
    auto first = std::ranges::find(Table, kind, &Variable::Kind);
    auto last =
        std::find_if(first, std::end(Table), [&](const Variable& v) { return v.Kind != kind; });
    return {first, last};
}

const Variable* FindVariable(std::uint32_t offset) {
    auto found = std::ranges::find(Table, offset, &Variable::Offset);
    return found == std::end(Table) ? nullptr : found;
}

std::string FullName(const Variable& variable) {
    const char* kind = KindName(variable.Kind);
    return kind ? std::string(variable.Name) + " (" + kind + ")" : variable.Name;
}

}  // namespace quirkmeter::practice
