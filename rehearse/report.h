// The result of a rehearsal in one record, which rehearse/print.h writes as text, as a page and as
// a table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rehearse/flight.h"
#include "rehearse/flight_plan.h"
#include "rehearse/tally.h"

namespace quirkmeter::rehearse {

struct Report {
    struct Fact {
        std::string Name, Value;
    };
    struct Bar {
        std::string Name;
        double Share;  // of all flights, 0 to 1
        std::optional<double> Calculated;
    };
    struct Chart {
        std::string Heading;
        std::string Names;  // the title of the names
        std::vector<Bar> Bars;
    };
    struct Count {
        std::string What, Number, Name;
        std::int64_t Flights;
    };
    /// A calculated chance beside the one of the flights.
    struct Chance {
        std::string Name;
        double Calculated, Flown;
        double StandardErrors;  // by which they differ; where none is expected, the share itself
        bool TooFar;            // more than four standard errors, or what is as unlikely
    };

    std::string Profile;   // its file's name, in UTF-8
    std::string Flown;     // "10,000 flights of 2 hours with 2 engines"
    std::string GearNote;  // when landing gear and flaps were up
    std::uint64_t Seed = 0;
    std::string Made;  // "FS2002 Quirkmeter 1.0, 2026-12-31"
    std::vector<Fact> Facts;
    std::vector<Chart> Charts;  // none without a bar
    std::vector<Fact> Flight;   // an ordinary one: "0 h 14 min", "Autopilot - Yaw Damper"
    std::vector<Count> Counts;
    std::vector<Chance> Chances;
};

/// `flown` holds flights of the plan, one or more, with the profile that the catalogue holds, and
/// `ordinary` is one of them. `profile` is the name of the profile's file, in UTF-8.
Report MakeReport(const std::string& profile, const FlightPlan& plan, const Tally& flown,
                  const Flight& ordinary);

/// The sub-systems that can fail, with their calculated chances, the likeliest first.
std::vector<Report::Bar> LikeliestByCalculation(const FlightPlan& plan);

/// With that many decimals, after a point.
std::string Decimal(double value, int digits);

/// A chance or share as "81.20 %".
std::string PercentOf(double share);

}  // namespace quirkmeter::rehearse
