#include "rehearse/report.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "rehearse/exact.h"
#include "rehearse/summary.h"

namespace quirkmeter::rehearse {

namespace {

constexpr int BarWidth = 40;

double Longest(const std::vector<Bar>& bars) {
    return bars.empty() ? 1 : std::max(1e-9, std::ranges::max(bars, {}, &Bar::Chance).Chance);
}

void WriteBars(std::ostream& out, const std::string& heading, const std::vector<Bar>& bars) {
    if (bars.empty()) return;
    std::size_t nameWidth = 0;
    for (const Bar& bar : bars) nameWidth = std::max(nameWidth, bar.Name.size());
    out << "\n" << heading << "\n";
    for (const Bar& bar : bars) {
        auto length = std::lround(bar.Chance / Longest(bars) * BarWidth);
        out << "  " << std::left << std::setw(static_cast<int>(nameWidth)) << bar.Name << "  "
            << std::right << std::setw(9) << Percent(bar.Chance);
        if (length > 0) out << "  " << std::string(static_cast<std::size_t>(length), '#');
        out << "\n";
    }
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

// The colours stand in the style sheet too, which a browser that knows no dark scheme leaves alone.
constexpr char PageHead[] = R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN"
 "http://www.w3.org/TR/html4/strict.dtd">
<html lang="en">
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
<style type="text/css">
body { max-width: 46em; margin: 2em auto; padding: 0 1em; font-family: Arial, sans-serif;
       color: #1d2a1d; background: #ffffff }
table { border-collapse: collapse; margin-bottom: 1.5em }
th, td { text-align: left; padding: 0.2em 1em 0.2em 0; vertical-align: top; font-weight: normal }
td.number { text-align: right; white-space: nowrap }
td.bar { width: 20em }
td.bar div { height: 1em; background: #2f6b2f }
p.note { font-size: 90% }
@media (prefers-color-scheme: dark) {
  body { color: #dfe8df; background: #141a14 }
  td.bar div { background: #7fc97f }
}
@media print { td.bar div { border: 1px solid #000000 } }
</style>
)";

void WriteHtmlBars(std::ostream& out, const std::string& heading, const std::string& names,
                   const std::vector<Bar>& bars) {
    if (bars.empty()) return;
    out << "<h2>" << heading << "</h2>\n<table summary=\"" << heading
        << "\">\n<tr><th scope=\"col\">" << names
        << "</th><th scope=\"col\">Flights</th><td></td></tr>\n";
    for (const Bar& bar : bars)
        out << "<tr><th scope=\"row\">" << Escaped(bar.Name) << "</th><td class=\"number\">"
            << Percent(bar.Chance) << "</td><td class=\"bar\"><div style=\"width: "
            << std::lround(bar.Chance / Longest(bars) * 100) << "%\"></div></td></tr>\n";
    out << "</table>\n";
}

// Where few are expected, standard errors say little: two flights where one in twenty was expected
// lie beyond eight of them, and come in every thousandth rehearsal. There the chance of so many
// flights or more is held against the chance of four standard errors or more.
bool ByChance(std::int64_t flights, double expected) {
    constexpr double FewExpected = 25;
    constexpr double FourStandardErrors = 3.2e-5;
    if (expected > FewExpected) return false;
    double chance = std::exp(-expected);
    double fewer = 0;
    for (std::int64_t n = 0; n < flights; chance *= expected / static_cast<double>(++n))
        fewer += chance;
    return 1 - fewer > FourStandardErrors;
}

}  // namespace

std::string TextReport(const Rehearsal& rehearsal) {
    std::ostringstream out;
    out << rehearsal.Profile << ": " << WhatWasFlown(rehearsal) << " (seed " << rehearsal.Plan.Seed
        << ")\n\n";
    for (const Fact& fact : Facts(rehearsal))
        out << std::left << std::setw(33) << fact.Name << fact.Value << "\n";
    WriteBars(out, "Failures in a flight", FailuresPerFlight(rehearsal.Flown));
    WriteBars(out, "Likeliest to fail", LikeliestSubsystems(rehearsal.Flown));
    WriteBars(out, "Systems", Systems(rehearsal.Flown));
    return out.str();
}

std::string HtmlReport(const Rehearsal& rehearsal) {
    std::ostringstream out;
    std::string profile = Escaped(rehearsal.Profile);
    out << PageHead << "<title>Rehearsal of " << profile
        << "</title>\n</head>\n<body>\n<h1>Rehearsal of " << profile << "</h1>\n<p>"
        << WhatWasFlown(rehearsal) << ".</p>\n<table summary=\"In short\">\n";
    for (const Fact& fact : Facts(rehearsal))
        out << "<tr><th scope=\"row\">" << fact.Name << "</th><td>" << fact.Value << "</td></tr>\n";
    out << "</table>\n";
    WriteHtmlBars(out, "Failures in a flight", "Failures", FailuresPerFlight(rehearsal.Flown));
    WriteHtmlBars(out, "Likeliest to fail", "Sub-system", LikeliestSubsystems(rehearsal.Flown));
    WriteHtmlBars(out, "Systems", "System", Systems(rehearsal.Flown));
    out << "<p class=\"note\">Landing gear and flaps, which fail only while they are up, went up "
        << rehearsal.Plan.RetractedAfterTakeOff << " min after take-off and came down "
        << rehearsal.Plan.ExtendedBeforeLanding
        << " min before landing. The same flights again: seed " << rehearsal.Plan.Seed
        << ".</p>\n</body>\n</html>\n";
    return out.str();
}

std::string CsvReport(const Rehearsal& rehearsal) {
    const Tally& flown = rehearsal.Flown;
    std::ostringstream out;
    auto write = [&out](const char* what, const auto& number, const std::string& name,
                        std::int64_t flights) {
        out << what << "," << number << ",\"" << name << "\"," << flights << "\n";
    };
    out << "what,number,name,flights\n";
    write("all", "", "", flown.Flights);
    for (std::size_t n = 0; n < flown.ByFailures.size(); ++n)
        if (flown.ByFailures[n] > 0) write("failures", n, "", flown.ByFailures[n]);
    for (std::size_t part = 0; part < flown.ByFirstFailure.size(); ++part)
        write("first failure in hundredth", part + 1, "", flown.ByFirstFailure[part]);
    for (int s = 1; SubsystemCount(s) > 0; ++s)
        write("system", s, std::string(SystemTitles[s].substr(1)),
              flown.BySystem[static_cast<std::size_t>(s)]);
    ForEachSubsystem([&](int s, int n, const SubsystemEntry&) {
        write("sub-system", std::to_string(s) + "#" + std::to_string(n), SubsystemName(s, n),
              flown.BySubsystem[static_cast<std::size_t>(s)][static_cast<std::size_t>(n)]);
    });
    return out.str();
}

Comparison Compare(const Rehearsal& rehearsal) {
    const Tally& flown = rehearsal.Flown;
    auto all = static_cast<double>(flown.Flights);
    Comparison comparison;
    std::ostringstream out;
    out << "                                   calculated    rehearsed  standard errors\n";
    auto row = [&](const std::string& name, double exact, std::int64_t flights) {
        double share = flown.ShareOfFlights(flights);
        double apart = share - exact;
        double error = std::sqrt(exact * (1 - exact) / all);
        if (error > 0) apart /= error;
        bool beyond =
            error > 0 ? std::abs(apart) > 4 && !ByChance(flights, exact * all) : apart != 0;
        comparison.Beyond += beyond;
        out << std::left << std::setw(35) << name << std::right << std::setw(10) << Percent(exact)
            << std::setw(13) << Percent(share) << std::setw(17) << std::fixed
            << std::setprecision(2) << apart << (beyond ? "  too far" : "") << "\n";
    };
    row("Nothing fails", ExactChanceOfNoFailure(rehearsal.Plan), flown.ByFailures[0]);
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        row(SubsystemName(s, n), ExactChance(entry, rehearsal.Plan),
            flown.BySubsystem[static_cast<std::size_t>(s)][static_cast<std::size_t>(n)]);
    });
    comparison.Text = out.str();
    return comparison;
}

}  // namespace quirkmeter::rehearse
