#include "rehearse/summary.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <numeric>

namespace quirkmeter::rehearse {

namespace {

constexpr std::size_t MostBars = 12;
constexpr std::size_t MostSubsystems = 10;

std::string Decimal(double value, int digits) {
    char text[64];
    char* end = std::to_chars(text, std::end(text), value, std::chars_format::fixed, digits).ptr;
    return {text, end};
}

// With at most that many decimals, and no zeros at their end.
std::string Short(double value, int digits) {
    std::string text = Decimal(value, digits);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

std::string Counted(double count, const std::string& what) {
    return Short(count, 2) + " " + what + (count == 1 ? "" : "s");
}

std::string Grouped(std::int64_t number) {
    std::string text = std::to_string(number);
    for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > 0; at -= 3)
        text.insert(static_cast<std::size_t>(at), 1, ',');
    return text;
}

std::string Duration(double hours) {
    auto minutes = std::lround(hours * 60);
    std::string rest = std::to_string(minutes % 60);
    return std::to_string(minutes / 60) + (rest.size() == 1 ? ":0" : ":") + rest;
}

std::string FirstFailure(const Rehearsal& rehearsal) {
    const Tally& flown = rehearsal.Flown;
    if (flown.Flights == flown.ByFailures[0]) return "never";
    auto by = [&](double share) {
        return Duration(flown.FirstFailureBy(share) * rehearsal.Plan.Hours);
    };
    return "by " + by(0.5) + " in half of the flights that have one (a quarter by " + by(0.25) +
           ", three quarters by " + by(0.75) + ")";
}

std::size_t MostFailures(const Tally& flown) {
    std::size_t most = Tally::MostFailures;
    while (most > 0 && flown.ByFailures[most] == 0) --most;
    return most;
}

}  // namespace

std::string WhatWasFlown(const Rehearsal& rehearsal) {
    const FlightPlan& plan = rehearsal.Plan;
    std::string text = Grouped(rehearsal.Flown.Flights) + " flights of " +
                       Counted(plan.Hours, "hour") + " with " + Counted(plan.Engines, "engine");
    if (rehearsal.Flown.Flights < plan.Flights)
        text += ", stopped before all of " + Grouped(plan.Flights) + " were flown";
    return text;
}

std::vector<Fact> Facts(const Rehearsal& rehearsal) {
    const Tally& flown = rehearsal.Flown;
    return {{"A flight in which nothing fails", Percent(flown.ShareOfFlights(flown.ByFailures[0]))},
            {"Failures in a flight", Decimal(flown.MeanFailures(), 2) + " on average, spread " +
                                         Decimal(flown.SpreadOfFailures(), 2) + ", at most " +
                                         std::to_string(MostFailures(flown))},
            {"The first failure", FirstFailure(rehearsal)}};
}

std::vector<Bar> FailuresPerFlight(const Tally& flown) {
    std::vector<Bar> bars;
    std::size_t most = MostFailures(flown);
    std::size_t width = most / MostBars + 1;  // of the range of numbers that share a bar
    for (std::size_t first = 0; first <= most; first += width) {
        std::size_t last = std::min(first + width - 1, most);
        auto begin = flown.ByFailures.begin() + static_cast<std::ptrdiff_t>(first);
        auto flights = std::accumulate(begin, begin + static_cast<std::ptrdiff_t>(last - first + 1),
                                       std::int64_t{0});
        std::string name = std::to_string(first);
        if (last > first) name.append(" to ").append(std::to_string(last));
        bars.push_back({name, flown.ShareOfFlights(flights)});
    }
    return bars;
}

std::vector<Bar> LikeliestSubsystems(const Tally& flown) {
    std::vector<Bar> bars;
    ForEachSubsystem([&](int s, int n, const SubsystemEntry&) {
        auto flights = flown.BySubsystem[static_cast<std::size_t>(s)][static_cast<std::size_t>(n)];
        if (flights > 0) bars.push_back({SubsystemName(s, n), flown.ShareOfFlights(flights)});
    });
    std::ranges::stable_sort(bars, std::ranges::greater(), &Bar::Chance);
    if (bars.size() > MostSubsystems) bars.resize(MostSubsystems);
    return bars;
}

std::vector<Bar> Systems(const Tally& flown) {
    std::vector<Bar> bars;
    for (int s = 1; SubsystemCount(s) > 0; ++s)
        bars.push_back({std::string(SystemTitles[s].substr(1)),
                        flown.ShareOfFlights(flown.BySystem[static_cast<std::size_t>(s)])});
    return bars;
}

std::string SubsystemName(int system, int subsystem) {
    return std::string(SystemTitles[system].substr(1)) + " - " +
           std::string(Catalogue[system][subsystem].Name);
}

std::string Percent(double share) {
    double percent = share * 100;
    return Decimal(percent, percent >= 9.995 ? 1 : 2) + " %";
}

}  // namespace quirkmeter::rehearse
