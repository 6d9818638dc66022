// The counts of a rehearsal. Their size does not grow with the number of flights.
#pragma once

#include <array>
#include <cstdint>

#include "model/catalogue.h"

namespace quirkmeter::rehearse {

struct Tally {
    /// Flights with more failures than this count as having so many.
    static constexpr int MaxFailures = 199;
    static constexpr int PartsOfFlight = 100;

    std::int64_t Flights = 0;
    std::int64_t Failures = 0;
    std::int64_t SquaredFailures = 0;                          // the sum over all flights
    std::array<std::int64_t, MaxFailures + 1> ByFailures{};    // flights with so many failures
    std::array<std::int64_t, PartsOfFlight> ByFirstFailure{};  // flights, by its hundredth
    std::array<std::int64_t, SystemSlots + 1> BySystem{};      // flights in which it failed
    std::array<std::array<std::int64_t, SubsystemSlots + 1>, SystemSlots + 1> BySubsystem{};

    double ShareOfFlights(std::int64_t flights) const;
    double MeanFailures() const;
    /// The standard deviation of the failures per flight.
    double SpreadOfFailures() const;
    /// When the first failure has come in `share` of the flights that have one, as a share of the
    /// flight. There must be such a flight.
    double FirstFailureBy(double share) const;
};

}  // namespace quirkmeter::rehearse
