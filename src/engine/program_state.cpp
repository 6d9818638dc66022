#include "engine/program_state.h"

#include <algorithm>
#include <iterator>

#include "link/actuation.h"
#include "link/sim_link.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/random.h"

namespace quirkmeter {

void ResetProgramState() {
    SimClose();
    SimInit();
    ModuleVersion = SimVersion = 0;
    for (auto& system : Catalogue)
        std::fill(std::begin(system), std::end(system), SubsystemEntry{});
    std::fill(std::begin(SystemNames), std::end(SystemNames), std::string_view{});
    std::fill(std::begin(FailureList), std::end(FailureList), FailureRow{});
    FailureCount = LastFailureCount = 0;
    std::fill(std::begin(DisconnectFlags), std::end(DisconnectFlags), false);
    Settings = {};
    EngineState = {};
    ResetRandom();
}

}  // namespace quirkmeter
