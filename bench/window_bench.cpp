// Measures the cost of the program in flight, with its real windows and an interface module in another
// process. The module keeps the block mapped so that its own share is small.
#include <wx/app.h>
#include <wx/modalhook.h>

#include <fstream>
#include <iostream>

#include "alternate.h"
#include "child_process.h"
#include "engine/tick.h"
#include "link/actuation.h"
#include "link/sim_link.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "practice/request_block.h"
#include "ui/frm_main.h"

namespace quirkmeter {

namespace {

frmMain* Window = nullptr;

std::byte* MapBlock(std::uintptr_t atom) {
    char name[256];
    platform::GlobalGetAtomNameA(static_cast<std::uint16_t>(atom), name, sizeof name);
    auto block = platform::OpenFileMappingA(platform::FileMapWrite, false, name);
    return static_cast<std::byte*>(platform::MapViewOfFile(block, platform::FileMapWrite, 0, 0, 0));
}

void ServeModule() {
    practice::OffsetSpace space;
    space.SetValue(0x3304, 4, 0x19980005);
    space.SetValue(0x3308, 4, 0xFADE0007);
    std::byte* block = nullptr;
    // The message is sent without an atom.
    platform::OwnWindow("UIPCMAIN", "", [&](auto, std::uintptr_t atom, auto) -> std::intptr_t {
        if (atom == 0) return 0;
        if (!block) block = MapBlock(atom);
        return practice::CarryOut(block, BlockSize, space, [](auto&) {});
    });
    std::cout << "ready" << std::endl;
    for (;;) platform::ServeMessages(1000);
}

void ATick(benchmark::State& state, int failures, int roundTrips) {
    ClearAllFailures(true);
    for (int n = 1; n <= failures; ++n) AddFailure(1, n);
    EngineTick();
    Alternate(state, EngineTick, [roundTrips] {
        std::uintptr_t reply = 0;
        for (int i = 0; i < roundTrips; ++i)
            platform::SendMessageTimeoutA(SimLink.Window, SimLink.MessageId, 0, 0,
                                          platform::SendBlock, 2000, &reply);
    });
    if (!EngineState.Connected || !EngineState.Airborne) state.SkipWithError("not in flight");
}
BENCHMARK_CAPTURE(ATick, 0, 0, 1)->Iterations(5001);
BENCHMARK_CAPTURE(ATick, 10, 10, 2)->Iterations(5001);

double ResidentBytes() {
    double size = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// In one minute of every ten, everything fails.
void GrowthInADay(benchmark::State& state) {
    double afterAnHour = 0;
    for (auto _ : state)
        for (int tick = 1; tick <= 86400; ++tick) {
            if (tick % 600 == 0) ForEachSubsystem([](int s, int n, auto&) { AddFailure(s, n); });
            if (tick % 600 == 60) ClearAllFailures(true);
            EngineTick();
            wxYield();
            if (tick == 3600) afterAnHour = ResidentBytes();
        }
    state.counters["bytes"] = ResidentBytes() - afterAnHour;
}
BENCHMARK(GrowthInADay)->Iterations(1);

// Closes a dialog once it is painted and its events are handled.
struct Opening final : wxModalDialogHook {
    int Enter(wxDialog* dialog) override {
        dialog->Bind(wxEVT_PAINT, [dialog](wxPaintEvent& event) {
            event.Skip();
            dialog->CallAfter([dialog] {
                if (dialog->IsModal()) dialog->EndModal(wxID_CANCEL);
            });
        });
        return wxID_NONE;
    }
};

void TheReliabilityDialog(benchmark::State& state) {
    Opening opening;
    opening.Register();
    auto click = [] {
        wxCommandEvent event(wxEVT_BUTTON, Window->cmdSetAllRel->GetId());
        Window->cmdSetAllRel->ProcessWindowEvent(event);
    };
    Alternate(state, click, [] {
        wxDialog(Window, wxID_ANY, "Empty", wxDefaultPosition, wxSize(400, 150)).ShowModal();
    });
}
BENCHMARK(TheReliabilityDialog)->Iterations(101);

}  // namespace

class BenchApp final : public wxApp {
   public:
    bool OnInit() override { return true; }
    int OnRun() override {
        Window = new frmMain;
        Window->Load();
        Window->Start();
        Window->tmrTimer.Stop();  // the benchmark makes the ticks
        Window->Show();
        Settings.DisplayFailures = true;
        benchmark::RunSpecifiedBenchmarks();
        return EXIT_SUCCESS;
    }
};

}  // namespace quirkmeter

wxIMPLEMENT_APP_NO_MAIN(quirkmeter::BenchApp);

int main(int argc, char** argv) {
    quirkmeter::Process module(quirkmeter::ServeModule);
    if (module.Line() != "ready") return EXIT_FAILURE;
    benchmark::Initialize(&argc, argv);
    return wxEntry(argc, argv);
}
