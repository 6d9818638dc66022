// The command line.
#pragma once

#include <cstdint>
#include <string>

#include "rehearse/flight_plan.h"

namespace quirkmeter::rehearse {

extern const char Usage[];

struct Options {
    std::string Profile;  // its path; empty: none was given
    FlightPlan Plan;
    std::string HtmlFile, CsvFile;  // empty: not wanted
    bool Check = false;
    bool Help = false;
    bool NothingElse = true;  // there was no option, at most a profile
    // The part of the flights that this process is to fly for another one, of so many; none of 0.
    std::int64_t Share = 0;
    std::int64_t Shares = 0;
};

/// False when the command line is wrong; what is wrong with it stands in `fault` then.
bool ParseOptions(int argc, char** argv, Options& options, std::string& fault);

}  // namespace quirkmeter::rehearse
