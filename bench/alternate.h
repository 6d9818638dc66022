// Measures two things alternately, so that other load on the machine affects both alike.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace quirkmeter {

using Clock = std::chrono::steady_clock;

/// Reports the median seconds of each of the two.
inline void Alternate(benchmark::State& state, auto program, auto baseline) {
    std::vector<double> seconds[2];
    auto run = [](auto& call, std::vector<double>& times) {
        Clock::time_point start = Clock::now();
        call();
        times.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    };
    for (auto _ : state) {
        run(program, seconds[0]);
        run(baseline, seconds[1]);
    }
    for (auto& times : seconds) std::ranges::sort(times);
    state.counters["program"] = seconds[0][seconds[0].size() / 2];
    state.counters["baseline"] = seconds[1][seconds[1].size() / 2];
}

}  // namespace quirkmeter
