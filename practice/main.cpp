// practice-simulator: stands in for the flight simulator and its interface module.
#include <charconv>
#include <cmath>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>

#include "practice/headless.h"
#include "practice/window.h"

namespace quirkmeter::practice {

namespace {

constexpr const char* Usage =
    "usage: practice-simulator [OPTION]...\n"
    "  --headless               no window: take commands line by line\n"
    "  --class NAME             class of the interface window: UIPCMAIN (default) or FS98MAIN\n"
    "  --takeoff-after SECONDS  take off by itself then (default 5)\n"
    "  --script FILE            follow the lines \"SECONDS COMMAND\" instead\n"
    "  --misbehave KIND         none (default), silent, late, wrong, drop or old\n"
    "  --duration SECONDS       end by itself\n"
    "  --log                    print events and writes, as --headless does\n"
    "commands: takeoff, land, pause, resume, gear up|down, flaps up|down, engines 0..4,\n"
    "          fuel TANK PERCENT, misbehave KIND, quit\n";

struct Options {
    bool Headless = false;
    bool Log = false;
    bool Help = false;
    std::string ClassName = "UIPCMAIN";
    double TakeOffAfter = 5;
    std::string ScriptFile;
    Misbehaviour Misbehave = Misbehaviour::None;
    double Duration = std::numeric_limits<double>::infinity();
};

bool ParseSeconds(const std::string& text, double& seconds) {
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, seconds);
    return error == std::errc() && stop == end && std::isfinite(seconds) && seconds >= 0;
}

// Returns the fault of the option or its value, empty when there is none.
std::string TakeValue(const std::string& option, const std::string& value, Options& options) {
    const char* wanted = nullptr;
    bool good = false;
    if (option == "--takeoff-after" || option == "--duration") {
        wanted = "a number of seconds, 0 or more";
        good =
            ParseSeconds(value, option == "--duration" ? options.Duration : options.TakeOffAfter);
    } else if (option == "--class") {
        wanted = "UIPCMAIN or FS98MAIN";
        good = value == "UIPCMAIN" || value == "FS98MAIN";
        options.ClassName = value;
    } else if (option == "--script") {
        wanted = "the name of a file";
        good = !value.empty();
        options.ScriptFile = value;
    } else if (option == "--misbehave") {
        wanted = "none, silent, late, wrong, drop or old";
        auto kind = ParseMisbehaviour(value);
        good = kind.has_value();
        options.Misbehave = kind.value_or(Misbehaviour::None);
    }
    if (!wanted) return "unknown option " + option;
    return good ? "" : option + " takes " + wanted;
}

// Returns the fault, empty when there is none.
std::string ParseOptions(int argc, char** argv, Options& options) {
    std::string fault;
    for (int i = 1; i < argc && fault.empty(); ++i) {
        std::string option = argv[i];
        if (option == "--headless")
            options.Headless = true;
        else if (option == "--log")
            options.Log = true;
        else if (option == "--help")
            options.Help = true;
        else
            fault = TakeValue(option, i + 1 < argc ? argv[++i] : "", options);
    }
    return fault;
}

std::optional<Script> ReadScript(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        std::cerr << "practice-simulator: cannot read " << path << "\n";
        return {};
    }
    int badLine = 0;
    auto script = ParseScript(file, badLine);
    if (!script) std::cerr << path << ":" << badLine << ": not \"SECONDS COMMAND\"\n";
    return script;
}

int Run(const Options& options) {
    std::optional<Script> script = Script{{options.TakeOffAfter, Command{Verb::TakeOff}}};
    if (!options.ScriptFile.empty()) script = ReadScript(options.ScriptFile);
    if (!script) return 2;
    if (options.Misbehave != Misbehaviour::None) {
        Command command{Verb::Misbehave, static_cast<int>(options.Misbehave)};
        script->insert(script->begin(), {0, command});
    }

    bool prints = options.Headless || options.Log;
    auto simulator = std::make_shared<Simulator>(
        std::move(*script), options.Duration, prints ? PrintLine : [](const std::string&) {});
    std::string fault = options.Headless ? RunHeadless(simulator, options.ClassName)
                                         : RunWindow(*simulator, options.ClassName);
    if (!fault.empty()) std::cerr << "practice-simulator: " << fault << "\n";
    return fault.empty() ? 0 : 1;
}

}  // namespace

}  // namespace quirkmeter::practice

int main(int argc, char** argv) {
    using namespace quirkmeter::practice;
    Options options;
    if (std::string fault = ParseOptions(argc, argv, options); !fault.empty()) {
        std::cerr << "practice-simulator: " << fault << "; --help shows the options\n";
        return 2;
    }
    if (options.Help) {
        std::cout << Usage;
        return 0;
    }
    return Run(options);
}
