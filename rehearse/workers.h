// The flights of a plan on all processors, by processes of this program's own: the engine's state is
// one for each process.
#pragma once

#include <wx/string.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "rehearse/flight_plan.h"
#include "rehearse/tally.h"

namespace quirkmeter::rehearse {

class Workers {
   public:
    /// Starts one for each processor: this program with these arguments and "--share N/ALL" behind
    /// them. The toolkit must be initialized.
    explicit Workers(const std::vector<wxString>& arguments);
    /// Ends those that still fly.
    ~Workers();
    Workers(const Workers&) = delete;

    /// Adds what has arrived to the tally. False when there is no more to come.
    bool Collect(Tally& tally);

   private:
    class Worker;
    std::vector<std::unique_ptr<Worker>> workers_;
};

/// The work of one process: flies every `all`th batch of the plan from number `share` (from 0) on,
/// and prints the counts of each as a line.
void FlyShare(const FlightPlan& plan, std::int64_t share, std::int64_t all);

}  // namespace quirkmeter::rehearse
