// Flights in simulated time, by the program's own engine.
#pragma once

#include "platform/platform.h"
#include "practice/offset_space.h"
#include "rehearse/flight_plan.h"
#include "rehearse/tally.h"

namespace quirkmeter::rehearse {

/// Flights come in batches, each with chance of its own, so that the flights of a plan are the same
/// on any number of processors.
inline constexpr std::int64_t FlightsPerBatch = 50;

std::int64_t Batches(const FlightPlan& plan);

/// An aircraft with its simulator on the in-process platform, of which there must be one at a time.
/// It flies with the reliabilities of the catalogue.
class RehearsalAircraft {
   public:
    explicit RehearsalAircraft(const FlightPlan& plan);
    ~RehearsalAircraft();
    RehearsalAircraft(const RehearsalAircraft&) = delete;

    /// Flies the batch of that number, from 0, and adds what happened to the tally.
    void FlyBatch(std::int64_t batch, Tally& tally);

   private:
    void Fly(Tally& tally);
    void FillTanks();

    FlightPlan plan_;
    practice::OffsetSpace space_;
    platform::WindowHandle module_;
};

}  // namespace quirkmeter::rehearse
