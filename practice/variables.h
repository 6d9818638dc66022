// The simulator variables that the practice simulator knows, with their names.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace quirkmeter::practice {

enum class VariableKind {
    Autopilot,       // 1: on
    Control,         // gear and flaps 0 (up) to 16383 (down), trim
    Disconnection,   // bits: 1 elevator, 2 aileron, 4 rudder, 8 throttle
    Electrical,      // 1: on
    SystemFailure,   // not 0: failed
    EngineFailure,   // bits: 1, 2, 4, 8 for the engines 1 to 4
    Lever,           // 0 (cut) to 16384 (full)
    Pump,            // 1: on
    Tank,            // 0 to FullTank
    Instrument,      // not 0: failed
    Radio,           // not 0: failed
    State,           // of the flight and of the module itself
    MessageText,     // ends at its first zero byte
    MessageSeconds,  // written to show the text that long
};

struct Variable {
    std::uint32_t Offset;
    std::uint32_t Size;
    VariableKind Kind;
    const char* Name;
};

inline constexpr std::uint32_t FullTank = 128 * 65536;
inline constexpr std::uint32_t FullLever = 16384;
inline constexpr std::uint32_t FullyDown = 16383;  // landing gear and flaps

namespace offset {
inline constexpr std::uint32_t Pause = 0x0264;      // 2 bytes, not 0: paused
inline constexpr std::uint32_t OnGround = 0x0366;   // 2 bytes, not 0: on the ground
inline constexpr std::uint32_t Latitude = 0x0560;   // 8 bytes, 90 degrees = 10001750 << 32
inline constexpr std::uint32_t Longitude = 0x0568;  // 8 bytes, 360 degrees = 1 << 64
inline constexpr std::uint32_t Altitude = 0x0570;   // 8 bytes, a metre = 1 << 32
inline constexpr std::uint32_t Slew = 0x05DC;       // 2 bytes, not 0: slewing
inline constexpr std::uint32_t Engines = 0x0AEC;    // 2 bytes
inline constexpr std::uint32_t EngineFailures = 0x0B6B;
inline constexpr std::uint32_t Flaps = 0x0BDC;
inline constexpr std::uint32_t Gear = 0x0BE8;
inline constexpr std::uint32_t Disconnection = 0x310A;
inline constexpr std::uint32_t ModuleVersion = 0x3304;     // 4 bytes
inline constexpr std::uint32_t SimulatorVersion = 0x3308;  // 4 bytes
inline constexpr std::uint32_t MessageText = 0x3380;
}  // namespace offset

/// All of them; those of one kind stand together.
std::span<const Variable> Variables();
std::span<const Variable> VariablesOf(VariableKind kind);

/// The variable that begins at that offset, or null.
const Variable* FindVariable(std::uint32_t offset);

/// The name with what the variable is, as in "Pitot Static (failure flag)".
std::string FullName(const Variable& variable);

}  // namespace quirkmeter::practice
