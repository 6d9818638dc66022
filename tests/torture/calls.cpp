// Makes every call to the platform fail once, at each of its turns in a flight that uses every
// feature, or at as many turns as the time allows.
#include <chrono>
#include <cstdio>
#include <random>

#include "torture/flight.h"

using namespace quirkmeter;

namespace {

struct Call {
    const char* Function;
    std::uint32_t LastError;
    int Turns = 1;  // the number of its calls in the flight
};
Call Calls[] = {{"FindWindowExA", 0},
                {"FindWindowA", 0},
                {"RegisterWindowMessageA", 0},
                {"GlobalAddAtomA", 8},
                {"CreateFileMappingA", 8},
                {"CreateFileMappingA", 183},
                {"MapViewOfFile", 8},
                {"SendMessageTimeoutA", 0},
                {"SendMessageTimeoutA", 5},
                {"SendMessageTimeoutA", 1400},
                {"sndPlaySoundA", 0},
                {"FileExists", 0},
                {"ReplaceFile", 0}};

// Flies while the call fails at that turn. Returns the invariant that broke; empty when none did.
std::string FlyWithout(Call& call, int turn, unsigned seed) {
    torture::Choose = [generator = std::mt19937(seed)](int n) mutable {
        return static_cast<int>(generator() % static_cast<unsigned>(n));
    };
    torture::Flight flight;
    int before = platform::inprocess::CallCount(call.Function);
    platform::inprocess::FailCalls(call.Function, turn, 1, call.LastError);
    while (flight.Ticks < 2000) flight.Step();
    call.Turns = std::min(platform::inprocess::CallCount(call.Function) - before, 400);
    flight.Recover();
    return flight.Broken;
}

}  // namespace

int main(int, char** arguments) {
    using std::chrono::steady_clock;
    auto seed = static_cast<unsigned>(std::atoi(arguments[1]));
    auto end = steady_clock::now() + std::chrono::seconds(std::atoi(arguments[2]));
    int tried = 0, lost = 0;
    for (int turn = 1; turn <= 400 && lost < 5; ++turn)
        for (Call& call : Calls) {
            if (turn > call.Turns || steady_clock::now() > end) continue;
            ++tried;
            std::string broken = FlyWithout(call, turn, seed);
            lost += !broken.empty();
            if (!broken.empty())
                std::fprintf(stderr, "seed %u, %s fails at its turn %d: %s\n", seed, call.Function,
                             turn, broken.c_str());
        }
    std::printf("calls to the platform that failed|%d|%d\n", tried, lost);
    return lost != 0;
}
