// The commands of the practice simulator, one a line, and scripts of them.
#pragma once

#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quirkmeter::practice {

enum class Misbehaviour {
    None,
    Silent,  // does not answer
    Late,    // answers after 1.5 seconds
    Wrong,   // carries nothing out and answers 2
    Drop,    // has no window
    Old,     // reports a module version that is too old
};

inline constexpr const char* MisbehaviourNames[] = {"none",  "silent", "late",
                                                    "wrong", "drop",   "old"};

std::optional<Misbehaviour> ParseMisbehaviour(std::string_view name);

enum class Verb { TakeOff, Land, Pause, Resume, Gear, Flaps, Engines, Fuel, Misbehave, Quit };

struct Command {
    Verb Action;
    int Value = 0;    // gear and flaps: 1 down; engines: 0 to 4; fuel: tank 1 to 11; a Misbehaviour
    int Percent = 0;  // fuel: 0 to 100
};

/// Understands
///   takeoff   land   pause   resume   gear up|down   flaps up|down   engines 0..4
///   fuel TANK PERCENT   misbehave KIND   quit
std::optional<Command> ParseCommand(const std::string& line);

struct ScriptLine {
    double Seconds;  // since the start
    Command What;
};

/// In order of their seconds.
using Script = std::vector<ScriptLine>;

/// Reads lines "SECONDS COMMAND" in any order; blank lines do not count. On a line that it does not
/// understand, returns nothing and the number of that line, from 1, in `badLine`.
std::optional<Script> ParseScript(std::istream& lines, int& badLine);

}  // namespace quirkmeter::practice
