// What the program costs the pilot's machine: a tick once a second, a draw step every ten. The
// in-process platform answers, so the figures are the program's own.
#include <benchmark/benchmark.h>

#include "engine/failure_draw.h"
#include "engine/program_state.h"
#include "engine/tick.h"
#include "link/sim_link.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "platform/inprocess/inprocess.h"
#include "platform/platform.h"
#include "practice/request_block.h"
#include "rehearse/no_window.h"

namespace quirkmeter {

namespace {

// An aircraft in the air with the link open and `failures` sub-systems failed.
class Flight {
   public:
    explicit Flight(int failures) {
        platform::inprocess::Reset();
        ResetProgramState();
        TheMainWindow = &window_;
        space_.SetValue(0x3304, 4, 0x19980005);
        space_.SetValue(0x3308, 4, 0xFADE0007);
        space_.SetValue(0x0AEC, 2, 4);
        platform::OwnWindow("UIPCMAIN", "", [this](auto, auto, auto) -> std::intptr_t {
            return practice::CarryOut(SimLink.View, BlockSize, space_,
                                      [](const practice::AppliedWrite&) {});
        });
        BuildCatalogue();
        ForEachSubsystem([this, failures](int s, int n, SubsystemEntry& entry) {
            entry.Reliability = "99.999";
            if (entry.Mode == FailureMode::Leak)
                space_.SetValue(static_cast<std::uint32_t>(entry.Offset), 4, 1 << 30);
            if (FailureCount < failures && entry.Mode != FailureMode::Stall) AddFailure(s, n);
        });
        ComputeFailureRanges();
        EngineTick();
    }
    ~Flight() {
        ResetProgramState();
        TheMainWindow = nullptr;
    }
    Flight(const Flight&) = delete;

   private:
    rehearse::NoWindow window_;
    practice::OffsetSpace space_;
};

void Tick(benchmark::State& state) {
    Flight flight(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        platform::inprocess::AdvanceClock(1);
        EngineTick();
    }
}
BENCHMARK(Tick)->Arg(0)->Arg(10)->Arg(58);

void OneDrawStep(benchmark::State& state) {
    Flight flight(0);
    for (auto _ : state) {
        platform::inprocess::AdvanceClock(10);
        DrawStep(0, 0);
    }
}
BENCHMARK(OneDrawStep);

void FailureRanges(benchmark::State& state) {
    Flight flight(0);
    for (auto _ : state) ComputeFailureRanges();
}
BENCHMARK(FailureRanges);

}  // namespace

}  // namespace quirkmeter

BENCHMARK_MAIN();
