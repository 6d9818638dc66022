#include "rehearse/report.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <numeric>

#include "rehearse/exact.h"

namespace quirkmeter::rehearse {

namespace {

constexpr std::size_t MaxBars = 12;
constexpr std::size_t MaxLikeliest = 10;

// Two decimals at most, and no zeros at their end.
std::string Short(double value) {
    std::string text = Decimal(value, 2);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

std::string Grouped(std::int64_t number) {
    std::string text = std::to_string(number);
    for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > 0; at -= 3)
        text.insert(static_cast<std::size_t>(at), 1, ',');
    return text;
}

// "2 flights" of the number 2, as it is written.
std::string Counted(const std::string& number, const std::string& what) {
    return number + " " + what + (number == "1" ? "" : "s");
}

std::string Duration(double hours) {
    auto minutes = std::lround(hours * 60);
    return std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min";
}

std::string SystemName(int system) {
    return std::string(SystemTitles[system].substr(1));
}

// "Instrument - Vacuum".
std::string SubsystemName(int system, int subsystem) {
    return SystemName(system) + " - " + std::string(Catalogue[system][subsystem].Name);
}

std::int64_t FlightsWith(const Tally& flown, int system) {
    return flown.BySystem[static_cast<std::size_t>(system)];
}

std::int64_t FlightsWith(const Tally& flown, int system, int subsystem) {
    return flown.BySubsystem[static_cast<std::size_t>(system)][static_cast<std::size_t>(subsystem)];
}

std::size_t MaxFailures(const Tally& flown) {
    std::size_t most = Tally::MaxFailures;
    while (most > 0 && flown.ByFailures[most] == 0) --most;
    return most;
}

std::string FirstFailure(const Tally& flown, double hours) {
    if (flown.Flights == flown.ByFailures[0]) return "never";
    auto by = [&](double share) { return Duration(flown.FirstFailureBy(share) * hours); };
    return "by " + by(0.5) + " in half of the flights that have one (a quarter by " + by(0.25) +
           ", three quarters by " + by(0.75) + ")";
}

// The share of flights by their number of failures.
Report::Chart FailuresPerFlight(const Tally& flown) {
    Report::Chart chart{"Failures in a flight", "Failures", {}};
    std::size_t most = MaxFailures(flown);
    std::size_t width = most / MaxBars + 1;  // of the range of numbers that share a bar
    for (std::size_t first = 0; first <= most; first += width) {
        std::size_t last = std::min(first + width - 1, most);
        auto begin = flown.ByFailures.begin() + static_cast<std::ptrdiff_t>(first);
        auto flights = std::accumulate(begin, begin + static_cast<std::ptrdiff_t>(last - first + 1),
                                       std::int64_t{0});
        std::string name = std::to_string(first);
        if (last > first) name.append(" to ").append(std::to_string(last));
        chart.Bars.push_back({name, flown.ShareOfFlights(flights), {}});
    }
    return chart;
}

void SortByShare(std::vector<Report::Bar>& bars) {
    std::ranges::stable_sort(bars, std::ranges::greater(), &Report::Bar::Share);
}

// The sub-systems that failed, the likeliest first.
Report::Chart Likeliest(const Tally& flown, const FlightPlan& plan) {
    Report::Chart chart{"Likeliest to fail", "Sub-system", {}};
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        std::int64_t flights = FlightsWith(flown, s, n);
        if (flights > 0)
            chart.Bars.push_back(
                {SubsystemName(s, n), flown.ShareOfFlights(flights), ExactChance(entry, plan)});
    });
    SortByShare(chart.Bars);
    if (chart.Bars.size() > MaxLikeliest) chart.Bars.resize(MaxLikeliest);
    return chart;
}

Report::Chart Systems(const Tally& flown, const FlightPlan& plan) {
    Report::Chart chart{"Systems", "System", {}};
    for (int s = 1; SubsystemCount(s) > 0; ++s)
        chart.Bars.push_back({SystemName(s), flown.ShareOfFlights(FlightsWith(flown, s)),
                              ExactChanceOfSystem(s, plan)});
    return chart;
}

std::vector<Report::Count> CountsOf(const Tally& flown) {
    std::vector<Report::Count> counts = {{"all", "", "", flown.Flights}};
    for (std::size_t n = 0; n < flown.ByFailures.size(); ++n)
        if (flown.ByFailures[n] > 0)
            counts.push_back({"failures", std::to_string(n), "", flown.ByFailures[n]});
    for (std::size_t part = 0; part < flown.ByFirstFailure.size(); ++part)
        counts.push_back({"first failure in hundredth", std::to_string(part + 1), "",
                          flown.ByFirstFailure[part]});
    for (int s = 1; SubsystemCount(s) > 0; ++s)
        counts.push_back({"system", std::to_string(s), SystemName(s), FlightsWith(flown, s)});
    ForEachSubsystem([&](int s, int n, const SubsystemEntry&) {
        counts.push_back({"sub-system", std::to_string(s) + "#" + std::to_string(n),
                          SubsystemName(s, n), FlightsWith(flown, s, n)});
    });
    return counts;
}

// Where few flights are expected, standard errors say little: two where one in twenty was expected
// are more than eight of them, and come in every thousandth rehearsal. There the chance of a count
// as far off as this is compared with that of four standard errors.
bool HappensByChance(std::int64_t flights, double expected) {
    constexpr double FewExpected = 25;
    constexpr double FourStandardErrors = 3.2e-5;
    if (expected > FewExpected) return false;
    double chance = std::exp(-expected);
    double fewer = 0;
    for (std::int64_t n = 0; n < flights; chance *= expected / static_cast<double>(++n))
        fewer += chance;
    bool tooMany = static_cast<double>(flights) > expected;
    return (tooMany ? 1 - fewer : fewer + chance) > FourStandardErrors;
}

Report::Chance Compare(const std::string& name, double calculated, std::int64_t flights,
                       const Tally& flown) {
    auto all = static_cast<double>(flown.Flights);
    double share = flown.ShareOfFlights(flights);
    double apart = share - calculated;
    double error = std::sqrt(calculated * (1 - calculated) / all);
    if (error == 0) return {name, calculated, share, apart, apart != 0};
    apart /= error;
    bool tooFar = std::abs(apart) > 4 && !HappensByChance(flights, calculated * all) &&
                  !HappensByChance(flown.Flights - flights, (1 - calculated) * all);
    return {name, calculated, share, apart, tooFar};
}

}  // namespace

Report MakeReport(const std::string& profile, const FlightPlan& plan, const Tally& flown,
                  const Flight& ordinary) {
    Report report;
    report.Profile = profile;
    report.Seed = plan.Seed;
    report.Flown = Counted(Grouped(flown.Flights), "flight") + " of " +
                   Counted(Short(plan.Hours), "hour") + " with " +
                   Counted(std::to_string(plan.Engines), "engine");
    if (flown.Flights < plan.Flights)
        report.Flown += ", stopped before all of " + Grouped(plan.Flights) + " were flown";
    report.GearNote = "Landing gear and flaps, which fail only while they are up, went up " +
                      Short(plan.RetractedAfterTakeOff) + " min after take-off and came down " +
                      Short(plan.ExtendedBeforeLanding) + " min before landing.";
    report.Facts = {
        {"A flight in which nothing fails",
         PercentOf(flown.ShareOfFlights(flown.ByFailures[0])) +
             " (calculated: " + PercentOf(ExactChanceOfNoFailure(plan)) + ")"},
        {"Failures in a flight", Decimal(flown.MeanFailures(), 2) +
                                     " on average (calculated: " + Decimal(ExactFailures(plan), 2) +
                                     "), spread " + Decimal(flown.SpreadOfFailures(), 2) +
                                     ", at most " + std::to_string(MaxFailures(flown))},
        {"The first failure", FirstFailure(flown, plan.Hours)}};
    report.Charts = {FailuresPerFlight(flown), Likeliest(flown, plan), Systems(flown, plan)};
    std::erase_if(report.Charts, [](const Report::Chart& chart) { return chart.Bars.empty(); });
    for (const FailureInFlight& failure : ordinary)
        report.Flight.push_back({Duration(static_cast<double>(failure.Step) / DrawStepsPerHour),
                                 SubsystemName(failure.System, failure.Subsystem)});
    report.Counts = CountsOf(flown);
    report.Chances.push_back(
        Compare("Nothing fails", ExactChanceOfNoFailure(plan), flown.ByFailures[0], flown));
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        report.Chances.push_back(Compare(SubsystemName(s, n), ExactChance(entry, plan),
                                         FlightsWith(flown, s, n), flown));
    });
    return report;
}

std::vector<Report::Bar> LikeliestByCalculation(const FlightPlan& plan) {
    std::vector<Report::Bar> bars;
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        double chance = ExactChance(entry, plan);
        if (chance > 0) bars.push_back({SubsystemName(s, n), chance, {}});
    });
    SortByShare(bars);
    return bars;
}

std::string Decimal(double value, int digits) {
    char text[64];
    char* end = std::to_chars(text, std::end(text), value, std::chars_format::fixed, digits).ptr;
    return {text, end};
}

std::string PercentOf(double share) {
    return Decimal(share * 100, 2) + " %";
}

}  // namespace quirkmeter::rehearse
