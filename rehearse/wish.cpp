#include "rehearse/wish.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <vector>

#include "model/catalogue.h"
#include "model/failure_range.h"
#include "model/number_text.h"
#include "rehearse/exact.h"
#include "rehearse/report.h"

namespace quirkmeter::rehearse {

namespace {

constexpr double HalfPoint = 0.005;
constexpr int LastHoursEntry = 1008;
// Below this chance of failure three decimals are too coarse: the hours grow and the chance with
// them.
constexpr double MinUnreliability = 0.5;
constexpr double SmallestUnreliability = 0.001;

// The entries of the reliability dialog's hours list: 0.0 to 0.9, then 1 to 999.
double HoursOfEntry(int entry) {
    return entry < 10 ? entry / 10.0 : entry - 9;
}

int EntryOf(double hours) {
    int entry = static_cast<int>(std::lround(hours < 0.95 ? hours * 10 : hours + 9));
    return std::min(entry, LastHoursEntry);
}

// A period has at least one draw step.
double PeriodHours(double hours) {
    return std::max(1.0, std::nearbyint(hours * DrawStepsPerHour)) / DrawStepsPerHour;
}

struct Failing {
    SubsystemEntry* Entry;
    int HoursEntry;
    double PercentPerHour;  // (100 - reliability) over the hours of a period
};

// Keeps the hours while the reliability stays in the dialog's range and is not too coarse there.
void SetRate(const Failing& failing, double k) {
    double rate = failing.PercentPerHour * k;
    int entry = failing.HoursEntry;
    auto unreliability = [&] { return rate * PeriodHours(HoursOfEntry(entry)); };
    while (entry > 0 && unreliability() > 100) --entry;
    while (entry < LastHoursEntry && unreliability() < MinUnreliability) ++entry;
    double rounded = std::round(unreliability() * 1000) / 1000;
    double percent = 100 - std::clamp(rounded, SmallestUnreliability, 100.0);
    failing.Entry->Reliability = NumberText(static_cast<float>(percent));
    failing.Entry->Hours = NumberText(static_cast<float>(HoursOfEntry(entry)));
}

std::vector<Failing> WhatCanFail() {
    std::vector<Failing> all;
    ForEachSubsystem([&all](int, int, SubsystemEntry& entry) {
        double unreliability = 100 - ReliabilityOf(entry);
        if (unreliability > 0)
            all.push_back(
                {&entry, EntryOf(HoursOf(entry)), unreliability / PeriodHours(HoursOf(entry))});
    });
    return all;
}

std::string LowerName(int system) {
    std::string name(SystemTitles[system].substr(1));
    name[0] = static_cast<char>(std::tolower(name[0]));
    return name;
}

}  // namespace

std::string ReadSystems(const std::string& names, SystemSet& systems) {
    systems.reset();
    for (std::size_t start = 0; start <= names.size();) {
        std::size_t end = std::min(names.find(',', start), names.size());
        std::string name = names.substr(start, end - start);
        int system = 1;
        while (system < SystemSlots && LowerName(system) != name) ++system;
        if (system == SystemSlots) {
            std::string fault = "there is no system \"" + name + "\", but";
            for (int s = 1; s < SystemSlots; ++s) fault += (s > 1 ? ", " : " ") + LowerName(s);
            return fault;
        }
        systems.set(static_cast<std::size_t>(system));
        start = end + 1;
    }
    return {};
}

void KeepOnly(const SystemSet& systems) {
    ForEachSubsystem([&systems](int s, int, SubsystemEntry& entry) {
        if (!systems[static_cast<std::size_t>(s)]) entry.Reliability = "100";
    });
}

std::string MeetWish(double percent, const FlightPlan& plan) {
    std::vector<Failing> all = WhatCanFail();
    auto chanceAt = [&](double logarithm) {
        for (const Failing& failing : all) SetRate(failing, std::exp(logarithm));
        return ExactChanceOfNoFailure(plan);
    };
    double wish = percent / 100, low = -20, high = 20;
    for (int halving = 0; halving < 40; ++halving) {
        double middle = (low + high) / 2;
        (chanceAt(middle) > wish ? low : high) = middle;
    }
    double below = chanceAt(high), above = chanceAt(low);
    bool aboveIsNearer = above - wish < wish - below;
    double nearest = aboveIsNearer ? above : chanceAt(high);
    if (std::abs(nearest - wish) <= HalfPoint) return {};
    return "no such profile can be made; the nearest has " + PercentOf(nearest) +
           " of flights in which nothing fails";
}

}  // namespace quirkmeter::rehearse
