// What a rehearsal has to say, for a terminal, a browser and a spreadsheet.
#pragma once

#include <string>

#include "rehearse/flight_plan.h"
#include "rehearse/tally.h"

namespace quirkmeter::rehearse {

/// The sub-systems are those of the catalogue, which must hold the profile that was flown.
struct Rehearsal {
    std::string Profile;  // its file's name, in UTF-8
    FlightPlan Plan;      // what was wanted; the tally tells how many of its flights were flown
    Tally Flown;
};

std::string TextReport(const Rehearsal& rehearsal);

/// One page with everything in it, in HTML that needs no style sheet to be readable.
std::string HtmlReport(const Rehearsal& rehearsal);

/// The counts: "what,number,name,flights" and a line for each.
std::string CsvReport(const Rehearsal& rehearsal);

/// The calculated chances beside those of the flights.
struct Comparison {
    std::string Text;
    int Beyond = 0;  // chances further apart than four standard errors are, or what is as unlikely
};
Comparison Compare(const Rehearsal& rehearsal);

}  // namespace quirkmeter::rehearse
