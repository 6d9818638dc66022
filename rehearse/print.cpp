#include "rehearse/print.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace quirkmeter::rehearse {

namespace {

constexpr char FlightHeading[] = "An ordinary flight with failures";
constexpr int BarWidth = 40;  // of all flights
constexpr char Scale[] = "0 %                50 %             100 %";

// Returns an empty text where nothing was calculated.
std::string CalculatedOf(const Report::Bar& bar) {
    return bar.Calculated ? PercentOf(*bar.Calculated) : "";
}

bool HasCalculated(const Report::Chart& chart) {
    return chart.Bars.front().Calculated.has_value();
}

void PrintChart(std::ostream& out, const Report::Chart& chart) {
    std::size_t nameWidth = chart.Heading.size();
    for (const Report::Bar& bar : chart.Bars) nameWidth = std::max(nameWidth, bar.Name.size());
    auto row = [&](const std::string& name, const std::string& share, const std::string& calculated,
                   const std::string& bar) {
        out << std::left << std::setw(static_cast<int>(nameWidth) + 2) << name << std::right
            << std::setw(10) << share;
        if (HasCalculated(chart)) out << std::setw(12) << calculated;
        out << (bar.empty() ? "" : "  ") << bar << "\n";
    };
    out << "\n";
    row(chart.Heading, "flights", "calculated", Scale);
    for (const Report::Bar& bar : chart.Bars) {
        auto length = static_cast<std::size_t>(std::lround(bar.Share * BarWidth));
        row("  " + bar.Name, PercentOf(bar.Share), CalculatedOf(bar), std::string(length, '#'));
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

constexpr char PageHead[] = R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN"
 "http://www.w3.org/TR/html4/strict.dtd">
<html lang="en">
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
)";

// IsPage recognises a page by this text.
constexpr char PageMark[] = "<meta name=\"generator\" content=\"FS2002 Quirkmeter rehearse\">\n";

// Browsers that do not know the dark colour scheme ignore it and show the light colours.
constexpr char PageStyle[] = R"(<style type="text/css">
body { max-width: 46em; margin: 2em auto; padding: 0 1em; font-family: Arial, sans-serif;
       color: #1d2a1d; background: #ffffff }
table { border-collapse: collapse; margin-bottom: 1.5em }
th, td { text-align: left; padding: 0.2em 1em 0.2em 0; vertical-align: top; font-weight: normal }
td.number, th.number { text-align: right; white-space: nowrap }
td.bar { width: 20em; padding-right: 0; border-left: 1px solid #a0a8a0;
         border-right: 1px solid #a0a8a0 }
td.bar div { height: 1em; background: #2f6b2f }
td.scale { text-align: center; padding-right: 0; font-size: 80% }
td.scale .low { float: left }
td.scale .high { float: right }
p.note { font-size: 90% }
@media (prefers-color-scheme: dark) {
  body { color: #dfe8df; background: #141a14 }
  td.bar div { background: #7fc97f }
}
@media print { td.bar div { border: 1px solid #000000 } }
</style>
)";

void PrintHtmlFacts(std::ostream& out, const char* summary,
                    const std::vector<Report::Fact>& facts) {
    out << "<table summary=\"" << summary << "\">\n";
    for (const Report::Fact& fact : facts)
        out << "<tr><th scope=\"row\">" << fact.Name << "</th><td>" << fact.Value << "</td></tr>\n";
    out << "</table>\n";
}

void PrintHtmlChart(std::ostream& out, const Report::Chart& chart) {
    auto number = [&](const std::string& text) {
        out << "<td class=\"number\">" << text << "</td>";
    };
    out << "<h2>" << chart.Heading << "</h2>\n<table summary=\"" << chart.Heading
        << "\">\n<tr><th scope=\"col\">" << chart.Names
        << "</th><th scope=\"col\" class=\"number\">Flights</th>"
        << (HasCalculated(chart) ? "<th scope=\"col\" class=\"number\">Calculated</th>" : "")
        << "<td class=\"scale\"><span class=\"low\">0 %</span><span class=\"high\">100 %</span>50 %"
           "</td></tr>\n";
    for (const Report::Bar& bar : chart.Bars) {
        out << "<tr><th scope=\"row\">" << Escaped(bar.Name) << "</th>";
        number(PercentOf(bar.Share));
        if (HasCalculated(chart)) number(CalculatedOf(bar));
        out << "<td class=\"bar\"><div style=\"width: " << Decimal(bar.Share * 100, 1)
            << "%\"></div></td></tr>\n";
    }
    out << "</table>\n";
}

}  // namespace

std::string TextOf(const Report& report) {
    std::ostringstream out;
    out << report.Profile << ": " << report.Flown << " (seed " << report.Seed << ")\n\n";
    for (const Report::Fact& fact : report.Facts)
        out << std::left << std::setw(33) << fact.Name << fact.Value << "\n";
    for (const Report::Chart& chart : report.Charts) PrintChart(out, chart);
    if (!report.Flight.empty()) out << "\n" << FlightHeading << "\n";
    for (const Report::Fact& failure : report.Flight)
        out << "  " << std::right << std::setw(10) << failure.Name << "  " << failure.Value << "\n";
    out << "\n" << report.Made << "\n";
    return out.str();
}

std::string PageOf(const Report& report) {
    std::ostringstream out;
    std::string profile = Escaped(report.Profile);
    out << PageHead << PageMark << PageStyle << "<title>Rehearsal of " << profile
        << "</title>\n</head>\n<body>\n<h1>Rehearsal of " << profile << "</h1>\n<p>" << report.Flown
        << ".</p>\n";
    PrintHtmlFacts(out, "In short", report.Facts);
    for (const Report::Chart& chart : report.Charts) PrintHtmlChart(out, chart);
    if (!report.Flight.empty()) {
        out << "<h2>" << FlightHeading << "</h2>\n";
        PrintHtmlFacts(out, FlightHeading, report.Flight);
    }
    out << "<p class=\"note\">" << report.GearNote << " The same flights again: seed "
        << report.Seed << ".</p>\n<p class=\"note\">" << report.Made << "</p>\n</body>\n</html>\n";
    return out.str();
}

bool IsPage(std::string_view content) {
    return content.find(PageMark) != content.npos;
}

std::string CsvOf(const Report& report) {
    std::ostringstream out;
    out << "what,number,name,flights\n";
    for (const Report::Count& count : report.Counts)
        out << count.What << "," << count.Number << ",\"" << count.Name << "\"," << count.Flights
            << "\n";
    return out.str();
}

std::string ChancesOf(const Report& report) {
    std::ostringstream out;
    out << "                                   calculated    rehearsed  standard errors\n"
        << std::fixed << std::setprecision(2);
    for (const Report::Chance& chance : report.Chances)
        out << std::left << std::setw(35) << chance.Name << std::right << std::setw(10)
            << PercentOf(chance.Calculated) << std::setw(13) << PercentOf(chance.Flown)
            << std::setw(17) << chance.StandardErrors << (chance.TooFar ? "  too far" : "") << "\n";
    return out.str();
}

}  // namespace quirkmeter::rehearse
