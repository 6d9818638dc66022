// The lines of a report, whatever it is written in.
#pragma once

#include <string>
#include <vector>

#include "rehearse/report.h"

namespace quirkmeter::rehearse {

struct Bar {
    std::string Name;
    double Chance = 0;
};

struct Fact {
    std::string Name, Value;
};

/// "10,000 flights of 2 hours with 2 engines"; says so when fewer were flown than wanted.
std::string WhatWasFlown(const Rehearsal& rehearsal);

/// The chance of a flight without a failure, failures per flight, when the first one comes.
std::vector<Fact> Facts(const Rehearsal& rehearsal);

/// The share of flights by their number of failures, in at most twelve bars.
std::vector<Bar> FailuresPerFlight(const Tally& flown);

/// At most ten sub-systems, the likeliest to fail first; none that never failed.
std::vector<Bar> LikeliestSubsystems(const Tally& flown);

/// Every system, in the program's order.
std::vector<Bar> Systems(const Tally& flown);

/// "Instrument - Vacuum".
std::string SubsystemName(int system, int subsystem);

/// A chance or share as "81.2 %" or "1.84 %".
std::string Percent(double share);

}  // namespace quirkmeter::rehearse
