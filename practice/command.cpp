#include "practice/command.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "practice/variables.h"

namespace quirkmeter::practice {

namespace {

std::vector<std::string> Words(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

std::optional<int> NumberWithin(const std::string& text, int low, int high) {
    int number = 0;
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < low || number > high) return {};
    return number;
}

std::optional<Command> PlainCommand(const std::string& word) {
    if (word == "takeoff") return Command{Verb::TakeOff};
    if (word == "land") return Command{Verb::Land};
    if (word == "pause") return Command{Verb::Pause};
    if (word == "resume") return Command{Verb::Resume};
    if (word == "quit") return Command{Verb::Quit};
    return {};
}

std::optional<Command> CommandWithValue(const std::string& word, const std::string& value) {
    if (word == "gear" || word == "flaps") {
        if (value != "up" && value != "down") return {};
        return Command{word == "gear" ? Verb::Gear : Verb::Flaps, value == "down"};
    }
    if (word == "engines") {
        if (auto count = NumberWithin(value, 0, 4)) return Command{Verb::Engines, *count};
    }
    if (word == "misbehave") {
        if (auto kind = ParseMisbehaviour(value))
            return Command{Verb::Misbehave, static_cast<int>(*kind)};
    }
    return {};
}

std::optional<Command> FuelCommand(const std::string& tank, const std::string& percent) {
    int tanks = static_cast<int>(VariablesOf(VariableKind::Tank).size());
    auto number = NumberWithin(tank, 1, tanks);
    auto amount = NumberWithin(percent, 0, 100);
    if (!number || !amount) return {};
    return Command{Verb::Fuel, *number, *amount};
}

}  // namespace

std::optional<Misbehaviour> ParseMisbehaviour(std::string_view name) {
    auto found = std::ranges::find(MisbehaviourNames, name);
    if (found == std::end(MisbehaviourNames)) return {};
    return static_cast<Misbehaviour>(found - MisbehaviourNames);
}

std::optional<Command> ParseCommand(const std::string& line) {
    std::vector<std::string> words = Words(line);
    if (words.size() == 1) return PlainCommand(words[0]);
    if (words.size() == 2) return CommandWithValue(words[0], words[1]);
    if (words.size() == 3 && words[0] == "fuel") return FuelCommand(words[1], words[2]);
    return {};
}

std::optional<Script> ParseScript(std::istream& lines, int& badLine) {
    Script script;
    std::string line;
    for (badLine = 1; std::getline(lines, line); ++badLine) {
        if (Words(line).empty()) continue;
        std::istringstream stream(line);
        double seconds = 0;
        if (!(stream >> seconds) || !std::isfinite(seconds) || seconds < 0) return {};
        std::getline(stream, line);
        auto command = ParseCommand(line);
        if (!command) return {};
        script.push_back({seconds, *command});
    }
    std::ranges::stable_sort(script, {}, &ScriptLine::Seconds);
    return script;
}

}  // namespace quirkmeter::practice
