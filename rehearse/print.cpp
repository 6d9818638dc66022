#include "rehearse/print.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace quirkmeter::rehearse {

namespace {

constexpr int BarWidth = 40;

double LongestOf(const Report::Chart& chart) {
    return std::max(1e-9, std::ranges::max(chart.Bars, {}, &Report::Bar::Share).Share);
}

void PrintChart(std::ostream& out, const Report::Chart& chart) {
    std::size_t nameWidth = 0;
    for (const Report::Bar& bar : chart.Bars) nameWidth = std::max(nameWidth, bar.Name.size());
    out << "\n" << chart.Heading << "\n";
    for (const Report::Bar& bar : chart.Bars) {
        auto length = std::lround(bar.Share / LongestOf(chart) * BarWidth);
        out << "  " << std::left << std::setw(static_cast<int>(nameWidth)) << bar.Name << "  "
            << std::right << std::setw(9) << PercentOf(bar.Share);
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

constexpr char PageHead[] = R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN"
 "http://www.w3.org/TR/html4/strict.dtd">
<html lang="en">
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
)";

// By this IsPage knows a page.
constexpr char PageMark[] = "<meta name=\"generator\" content=\"FS2002 Quirkmeter rehearse\">\n";

// The colours stand in the style sheet too, which a browser that knows no dark scheme leaves alone.
constexpr char PageStyle[] = R"(<style type="text/css">
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

void PrintHtmlChart(std::ostream& out, const Report::Chart& chart) {
    out << "<h2>" << chart.Heading << "</h2>\n<table summary=\"" << chart.Heading
        << "\">\n<tr><th scope=\"col\">" << chart.Names
        << "</th><th scope=\"col\">Flights</th><td></td></tr>\n";
    for (const Report::Bar& bar : chart.Bars)
        out << "<tr><th scope=\"row\">" << Escaped(bar.Name) << "</th><td class=\"number\">"
            << PercentOf(bar.Share) << "</td><td class=\"bar\"><div style=\"width: "
            << std::lround(bar.Share / LongestOf(chart) * 100) << "%\"></div></td></tr>\n";
    out << "</table>\n";
}

}  // namespace

std::string TextOf(const Report& report) {
    std::ostringstream out;
    out << report.Profile << ": " << report.Flown << " (seed " << report.Seed << ")\n\n";
    for (const Report::Fact& fact : report.Facts)
        out << std::left << std::setw(33) << fact.Name << fact.Value << "\n";
    for (const Report::Chart& chart : report.Charts) PrintChart(out, chart);
    return out.str();
}

std::string PageOf(const Report& report) {
    std::ostringstream out;
    std::string profile = Escaped(report.Profile);
    out << PageHead << PageMark << PageStyle << "<title>Rehearsal of " << profile
        << "</title>\n</head>\n<body>\n<h1>Rehearsal of " << profile << "</h1>\n<p>" << report.Flown
        << ".</p>\n<table summary=\"In short\">\n";
    for (const Report::Fact& fact : report.Facts)
        out << "<tr><th scope=\"row\">" << fact.Name << "</th><td>" << fact.Value << "</td></tr>\n";
    out << "</table>\n";
    for (const Report::Chart& chart : report.Charts) PrintHtmlChart(out, chart);
    out << "<p class=\"note\">" << report.GearNote << " The same flights again: seed "
        << report.Seed << ".</p>\n</body>\n</html>\n";
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
