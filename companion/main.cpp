// fsqmhc.exe: a minimised window for as long as Quirkmeter runs in Hardcore Mode. It ignores the
// parameter that Quirkmeter passes.
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "companion.h"

namespace {

using Clock = std::chrono::steady_clock;

void ServeUntil(Clock::time_point end) {
    using namespace quirkmeter::platform;
    for (auto now = Clock::now(); now < end && !TerminationRequested(); now = Clock::now()) {
        auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
        ServeMessages(static_cast<std::uint32_t>(left.count()));
    }
}

}  // namespace

int main() {
    using namespace quirkmeter;
    Companion companion("\\" QUIRKMETER_PROGRAM);
    platform::InstanceClaim claim = companion.Start();
    if (claim == platform::InstanceClaim::Failed) {
        std::fprintf(stderr, "fsqmhc: %s\n", platform::LastErrorText().c_str());
        return EXIT_FAILURE;
    }
    if (claim == platform::InstanceClaim::Taken) return EXIT_SUCCESS;
    do ServeUntil(Clock::now() + std::chrono::seconds(1));
    while (!platform::TerminationRequested() && companion.Tick());
}
