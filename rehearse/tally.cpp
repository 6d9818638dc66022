#include "rehearse/tally.h"

#include <cmath>
#include <cstddef>

namespace quirkmeter::rehearse {

double Tally::ShareOfFlights(std::int64_t flights) const {
    return Flights == 0 ? 0 : static_cast<double>(flights) / static_cast<double>(Flights);
}

double Tally::MeanFailures() const {
    return ShareOfFlights(Failures);
}

double Tally::SpreadOfFailures() const {
    double mean = MeanFailures();
    return std::sqrt(std::fmax(0, ShareOfFlights(SquaredFailures) - mean * mean));
}

double Tally::FirstFailureBy(double share) const {
    double wanted = share * static_cast<double>(Flights - ByFailures[0]);
    double before = 0;
    for (std::size_t part = 0; part < PartsOfFlight; ++part) {
        auto within = static_cast<double>(ByFirstFailure[part]);
        if (within > 0 && before + within >= wanted)
            return (static_cast<double>(part) + (wanted - before) / within) / PartsOfFlight;
        before += within;
    }
    return 1;
}

}  // namespace quirkmeter::rehearse
