#include "rehearse/options.h"

#include <charconv>
#include <iterator>
#include <map>
#include <random>
#include <variant>

namespace quirkmeter::rehearse {

const char Usage[] =
    "usage: rehearse PROFILE [OPTION]...\n"
    "Flies many flights in simulated time with the reliabilities of a profile and reports the\n"
    "failures. Without a terminal it opens a window.\n"
    "  --hours HOURS        length of a flight (default 2)\n"
    "  --flights NUMBER     number of flights (default 10000)\n"
    "  --engines NUMBER     engines of the aircraft, 0 to 4 (default 2)\n"
    "  --gear-up MINUTES    time after take-off when gear and flaps go up (default 1)\n"
    "  --gear-down MINUTES  time before landing when gear and flaps come down (default 10)\n"
    "  --seed NUMBER        the same number repeats the same flights\n"
    "  --html FILE          write the report as a web page\n"
    "  --csv FILE           write the counts for a spreadsheet\n"
    "  --nothing-fails PERCENT\n"
    "                       make a profile with which nothing fails in this share of the flights;\n"
    "                       everything fails more or less often in proportion to PROFILE\n"
    "  --save FILE          the new profile, with which the flights are then flown\n"
    "  --only SYSTEM,...    the systems that may fail with it, for example instrument,radio\n"
    "  --overwrite          replace the file of --save if it exists\n"
    "  --check              compare with the calculated chances; exit status 1 if one is too far "
    "off\n"
    "  -h, --help           print this text\n"
    "  --version            print the version\n"
    "A FILE of - is standard output, which then has only that.\n"
    "Ctrl+C ends the flights; the report tells of those flown so far.\n";

namespace {

template <typename Number, typename Stored = Number>
struct Range {
    Stored& Value;
    Number Low, High;
};
using Percent = Range<double, std::optional<double>>;

// An option sets one of these: a switch, which takes no value, a number, or the name of a file.
using Target = std::variant<bool*, Range<double>, Percent, Range<std::int64_t>,
                            Range<std::uint64_t>, std::string*>;

std::map<std::string, Target> TargetsIn(Options& options) {
    FlightPlan& plan = options.Plan;
    return {{"--hours", Range<double>{plan.Hours, 0.01, 1000}},
            {"--flights", Range<std::int64_t>{plan.Flights, 1, 1'000'000'000}},
            {"--engines", Range<std::int64_t>{plan.Engines, 0, 4}},
            {"--gear-up", Range<double>{plan.RetractedAfterTakeOff, 0, 60000}},
            {"--gear-down", Range<double>{plan.ExtendedBeforeLanding, 0, 60000}},
            {"--seed", Range<std::uint64_t>{plan.Seed, 0, ~0ull}},
            {"--html", &options.HtmlFile},
            {"--csv", &options.CsvFile},
            {"--nothing-fails", Percent{options.NothingFails, 0, 100}},
            {"--save", &options.SaveFile},
            {"--only", &options.Only},
            {"--overwrite", &options.Overwrite},
            {"--check", &options.Check},
            {"--help", &options.Help},
            {"-h", &options.Help},
            {"--version", &options.Version}};
}

template <typename Number>
std::string Written(Number number) {
    char text[32];
    return {text, std::to_chars(text, std::end(text), number).ptr};
}

// Stores an option's value. Returns the valid values; nothing when this is one of them.
struct Setter {
    const std::string& Value;

    template <typename Number, typename Stored>
    std::string operator()(const Range<Number, Stored>& range) const {
        Number number{};
        const char* end = Value.data() + Value.size();
        auto [last, error] = std::from_chars(Value.data(), end, number);
        if (error != std::errc() || last != end || !(range.Low <= number && number <= range.High))
            return "a number from " + Written(range.Low) + " to " + Written(range.High);
        range.Value = number;
        return {};
    }
    std::string operator()(std::string* text) const {
        *text = Value;
        return Value.empty() ? "a name" : "";
    }
    std::string operator()(bool* chosen) const {
        *chosen = true;
        return {};
    }
};

}  // namespace

std::string ParseOptions(int argc, char** argv, Options& options) {
    options.Plan.Seed = std::random_device()();
    std::map<std::string, Target> targets = TargetsIn(options);
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        if (!argument.starts_with('-')) {
            if (!options.Profile.empty()) return "one profile at a time";
            options.Profile = argument;
            continue;
        }
        options.NothingElse = false;
        std::size_t equals = argument.find('=');
        std::string name = argument.substr(0, equals);
        auto target = targets.find(name);
        if (target == targets.end()) return "there is no option " + name;
        bool needsValue = !std::holds_alternative<bool*>(target->second);
        bool hasValue = equals != argument.npos;
        if (hasValue && !needsValue) return name + " takes no value";
        if (!hasValue && needsValue && i + 1 == argc) return name + " needs a value";
        std::string value;
        if (needsValue) value = hasValue ? argument.substr(equals + 1) : argv[++i];
        std::string wanted = std::visit(Setter{value}, target->second);
        if (!wanted.empty())
            return name.append(" must be ").append(wanted).append(", not \"" + value + "\"");
    }
    if (options.NothingFails.has_value() != !options.SaveFile.empty())
        return "--nothing-fails and --save go together";
    if (options.SaveFile.empty() && (options.Overwrite || !options.Only.empty()))
        return "--only and --overwrite are for a profile to --save";
    return {};
}

}  // namespace quirkmeter::rehearse
