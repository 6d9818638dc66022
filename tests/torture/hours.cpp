// Flies 100,000 hours, or the number of the third argument, or as many as the time allows, and
// checks the invariants of a flight.
#include <unistd.h>

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <random>

#include "torture/flight.h"

int main(int count, char** arguments) {
    using namespace quirkmeter::torture;
    using std::chrono::steady_clock;
    constexpr std::int64_t Hour = 3600;
    std::int64_t most = (count > 3 ? std::atoi(arguments[3]) : 100000) * Hour;
    std::mt19937_64 seeded(std::strtoull(arguments[1], nullptr, 10));
    Choose = [generator = seeded](int n) mutable {
        return static_cast<int>(generator() % static_cast<unsigned>(n));
    };
    auto end = steady_clock::now() + std::chrono::seconds(std::atoi(arguments[2]));

    std::int64_t ticks = 0, actions = 0;
    std::string broken;
    while (broken.empty() && ticks < most && steady_clock::now() < end) {
        Flight flight;
        while (flight.Broken.empty() && flight.Ticks < std::min(most, 100 * Hour) &&
               steady_clock::now() < end)
            for (int i = 0; i < Hour && flight.Broken.empty(); ++i) flight.Step();
        if (flight.Broken.empty()) flight.Recover();
        ticks += flight.Ticks;
        actions += flight.Actions;
        broken = flight.Broken;
        if (isatty(2)) std::fprintf(stderr, "\r%" PRId64 " hours ", ticks / Hour);
    }
    bool lost = !broken.empty();
    if (lost) std::fprintf(stderr, "seed %s: %s\n", arguments[1], broken.c_str());
    std::printf("hours of flight|%" PRId64 "|%d\n", ticks / Hour, lost);
    std::printf("actions of the user in them|%" PRId64 "|%d\n", actions, lost);
    return lost;
}
