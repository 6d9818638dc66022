#include "rehearse/options.h"

#include <charconv>
#include <cmath>
#include <random>
#include <string_view>

namespace quirkmeter::rehearse {

const char Usage[] =
    "usage: rehearse PROFILE [OPTION]...\n"
    "Flies many flights in no time with the reliabilities of a profile, and tells what failed.\n"
    "  --hours HOURS      length of a flight (default 2)\n"
    "  --flights NUMBER   how many (default 10000)\n"
    "  --engines NUMBER   engines of the aircraft, 0 to 4 (default 2)\n"
    "  --gear-up MINUTES  gear and flaps are up from then on after take-off (default 1)\n"
    "  --gear-down MINUTES  and until then before landing (default 10)\n"
    "  --seed NUMBER      the same number brings back the same flights\n"
    "  --html FILE        write the report as a page for a browser\n"
    "  --csv FILE         write the counts for a spreadsheet\n"
    "  --check            compare with the calculated chances; fails if any is too far off\n"
    "Ctrl+C ends it with the flights flown so far.\n";

namespace {

template <typename Number>
bool ParseNumber(std::string_view text, Number low, Number high, Number& number) {
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && low <= number &&
           number <= high;
}

bool TakeText(const std::string& value, std::string& text) {
    text = value;
    return !text.empty();
}

bool TakeValue(std::string_view option, const std::string& value, Options& options) {
    FlightPlan& plan = options.Plan;
    if (option == "--hours") return ParseNumber(value, 0.01, 1000.0, plan.Hours);
    if (option == "--flights")
        return ParseNumber<std::int64_t>(value, 1, 1'000'000'000, plan.Flights);
    if (option == "--engines") return ParseNumber<std::int64_t>(value, 0, 4, plan.Engines);
    if (option == "--gear-up") return ParseNumber(value, 0.0, 60000.0, plan.RetractedAfterTakeOff);
    if (option == "--gear-down")
        return ParseNumber(value, 0.0, 60000.0, plan.ExtendedBeforeLanding);
    if (option == "--seed") return ParseNumber<std::uint64_t>(value, 0, ~0ull, plan.Seed);
    if (option == "--html") return TakeText(value, options.HtmlFile);
    if (option == "--csv") return TakeText(value, options.CsvFile);
    return false;
}

}  // namespace

std::string ParseOptions(int argc, char** argv, Options& options) {
    options.Plan.Seed = std::random_device()();
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        bool isOption = argument.starts_with("--");
        if (isOption) options.NothingElse = false;
        if (argument == "--help") {
            options.Help = true;
        } else if (argument == "--check") {
            options.Check = true;
        } else if (!isOption) {
            if (!options.Profile.empty()) return "one profile at a time";
            options.Profile = argument;
        } else if (++i == argc || !TakeValue(argument, argv[i], options)) {
            return argument + (i < argc ? std::string(" cannot be ") + argv[i] : " lacks a value");
        }
    }
    return {};
}

}  // namespace quirkmeter::rehearse
