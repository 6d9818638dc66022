// Every call to the platform fails once, at each of its turns in a flight that uses every feature.
#include <cstdio>
#include <random>

#include "torture/flight.h"

using namespace quirkmeter;

namespace {

struct Call {
    const char* Function;
    std::uint32_t LastError;
    bool MakesGood;  // by itself, so that nobody sees anything of it
};
constexpr Call Calls[] = {{"FindWindowExA", 0, false},
                          {"FindWindowA", 0, false},
                          {"RegisterWindowMessageA", 0, false},
                          {"GlobalAddAtomA", 8, false},
                          {"CreateFileMappingA", 8, false},
                          {"CreateFileMappingA", 183, false},
                          {"MapViewOfFile", 8, false},
                          {"SendMessageTimeoutA", 0, true},
                          {"SendMessageTimeoutA", 5, true},
                          {"SendMessageTimeoutA", 1400, false},
                          {"sndPlaySoundA", 0, false},
                          {"FileExists", 0, false},
                          {"ReplaceFile", 0, false}};

}  // namespace

int main(int, char** arguments) {
    int tried = 0, lost = 0;
    for (const Call& call : Calls)
        for (int turn = 1, turns = 1; turn <= turns; ++turn, ++tried) {
            std::mt19937 seeded(static_cast<unsigned>(std::atoi(arguments[1])));
            torture::Choose = [generator = seeded](int n) mutable {
                return static_cast<int>(generator() % static_cast<unsigned>(n));
            };
            torture::Flight flight;
            int before = platform::inprocess::CallCount(call.Function);
            platform::inprocess::FailCalls(call.Function, turn, 1, call.LastError);
            while (flight.Ticks < 2000) flight.Step();
            turns = std::min(platform::inprocess::CallCount(call.Function) - before, 400);
            bool seen = call.MakesGood && !flight.Difference.empty();
            if (flight.Recovers() && !seen) continue;
            ++lost;
            std::fprintf(stderr, "%s, turn %d: %s\n", call.Function, turn,
                         flight.Difference.c_str());
        }
    std::printf("calls to the platform that failed|%d|%d\n", tried, lost);
    return lost != 0;
}
