// Measures the program's own computation beside the plainest code that touches the same data. The
// in-process platform costs next to nothing.
#include <filesystem>
#include <fstream>
#include <string>

#include "alternate.h"
#include "engine/failure_draw.h"
#include "link/sim_link.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_range.h"
#include "persist/profile.h"
#include "platform/inprocess/inprocess.h"

namespace quirkmeter {

namespace {

constexpr int Subsystems = 62;
constexpr std::int32_t Period = 360;  // draw steps of an hour

struct {
    double Reliability[Subsystems];
    std::int32_t DrawAt[Subsystems], Elapsed[Subsystems], Draws;
} Bare;

void BareStep() {
    for (int i = 0; i < Subsystems; ++i) {
        if (Bare.Reliability[i] >= 100) continue;
        ++Bare.Elapsed[i];
        if (Bare.Elapsed[i] == Bare.DrawAt[i]) ++Bare.Draws;
        if (Bare.Elapsed[i] >= Period) Bare.Elapsed[i] = 0;
    }
    benchmark::ClobberMemory();
}

void AnHourOfDrawSteps(benchmark::State& state) {
    BuildCatalogue();
    EngineState.EngineCount = 4;
    ForEachSubsystem([](int, int, SubsystemEntry& entry) { entry.Reliability = "99.999"; });
    ComputeFailureRanges();
    for (int i = 0; i < Subsystems; ++i) Bare.DrawAt[i] = 1 + i * Period / Subsystems;
    auto hourOf = [](auto step) {
        return [step] {
            for (int i = 0; i < Period; ++i) {
                platform::inprocess::AdvanceClock(10);
                step();
            }
        };
    };
    Alternate(state, hourOf([] { DrawStep(0, 0); }), hourOf(BareStep));
}
BENCHMARK(AnHourOfDrawSteps)->Iterations(501);

constexpr int RecordWords = 5;
constexpr int Records = (BlockUsed - 4) / (4 * RecordWords);
std::int32_t Block[BlockSize / 4];
std::int32_t Answers[Records];

// Each record gives the position of the next one.
void CopyAndWalk() {
    std::int32_t* next = Block;
    for (int i = 0; i < Records; ++i, next += RecordWords) {
        next[0] = 1;
        next[1] = 0x0560;
        next[2] = sizeof Answers[i];
        next[3] = i;
        next[4] = 0;
    }
    benchmark::ClobberMemory();
    for (std::int32_t* at = Block; at < next; at += RecordWords - 1 + at[2] / 4)
        Answers[at[3]] = at[4];
    benchmark::ClobberMemory();
}

// The module does nothing.
void AFullBlock(benchmark::State& state) {
    SimLink.View = SimLink.Next = reinterpret_cast<std::byte*>(Block);
    SimLink.Window = platform::OwnWindow("", "", [](auto, auto, auto) { return std::intptr_t{1}; });
    auto queueAndReadBack = [&state] {
        std::int32_t result = 0;
        for (std::int32_t& answer : Answers) SimRead(0x0560, sizeof answer, &answer, result);
        if (!SimProcess(result)) state.SkipWithError("not processed");
    };
    Alternate(state, queueAndReadBack, CopyAndWalk);
}
BENCHMARK(AFullBlock)->Iterations(5001);

void ReadAndSplit(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);)
        for (std::size_t at = 0; at != line.npos; at = line.find('#', at + 1))
            benchmark::DoNotOptimize(at);
}

void AMillionLines(benchmark::State& state) {
    BuildCatalogue();
    std::string path = std::filesystem::temp_directory_path() / "quirkmeter-bench.qmp";
    std::ofstream file(path, std::ios::binary);
    for (int i = 0; i < 1'000'000; ++i)
        file << i % 7 + 1 << "#" << i % 4 + 1 << "#" << i % 100 << "." << i % 1000 << "#" << i % 999
             << "\r\n";
    file.close();
    auto read = [&] {
        if (ApplyProfile(path)) state.SkipWithError("not read");
    };
    Alternate(state, read, [&path] { ReadAndSplit(path); });
    std::filesystem::remove(path);
}
BENCHMARK(AMillionLines)->Iterations(31);

}  // namespace

}  // namespace quirkmeter

BENCHMARK_MAIN();
