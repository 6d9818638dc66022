// The command line.
#pragma once

#include <optional>
#include <string>

#include "rehearse/flight_plan.h"

namespace quirkmeter::rehearse {

extern const char Usage[];

struct Options {
    std::string Profile;  // its path; empty: none was given
    FlightPlan Plan;
    std::string HtmlFile, CsvFile;       // "-": standard output; empty: not wanted
    std::optional<double> NothingFails;  // percent of flights; no wish: nothing
    std::string SaveFile, Only;          // the new profile; its systems, empty: all
    bool Overwrite = false;
    bool Check = false;
    bool Help = false;
    bool Version = false;
    bool NothingElse = true;  // there was no option, at most a profile
};

/// Returns the fault of the command line; nothing when there is none.
std::string ParseOptions(int argc, char** argv, Options& options);

}  // namespace quirkmeter::rehearse
