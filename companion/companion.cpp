#include "companion.h"

namespace quirkmeter {

namespace {

std::optional<std::uint32_t> RunningProgram() {
    return platform::InstanceProcess("Quirkmeter");
}

}  // namespace

Companion::~Companion() {
    DropCompanionWindow();
}

// The program claims its instance before it looks for the window. A program that starts from now on
// therefore finds the window. A program that runs already started this companion and will end.
platform::InstanceClaim Companion::Start() {
    using enum platform::InstanceClaim;
    platform::InstanceClaim claim = platform::ClaimSingleInstance("fsqmhc");
    if (claim != Claimed) return claim;
    if (!OwnCompanionWindow()) return Failed;
    std::optional<std::uint32_t> running = RunningProgram();
    if (!running) return Failed;
    starter_ = *running;
    return Claimed;
}

bool Companion::OwnCompanionWindow() {
    window_ = platform::OwnWindow(
        "ThunderRT6FormDC", "FSQMHC",
        [](std::uint32_t, std::uintptr_t, std::intptr_t) { return std::intptr_t{0}; });
    if (window_ != 0) platform::ShowInTaskBar(window_);
    return window_ != 0;
}

void Companion::DropCompanionWindow() {
    if (window_ != 0) platform::DropWindow(window_);
    window_ = 0;
}

bool Companion::Tick() {
    std::optional<std::uint32_t> lookup = RunningProgram();
    if (!lookup) return true;  // the search failed: the next tick repeats it
    std::uint32_t running = *lookup;
    ++ticks_;
    switch (state_) {
        case State::ProgramEnding:
            // A second program would end at once while the first one is still ending. A program that
            // stays, or is a new one, was started by the user after this companion's window.
            if (running == 0) {
                std::string program = platform::ProgramFile(program_);
                platform::ShellExecuteA(0, "Open", program.c_str(), "", "", platform::ShowNormal);
                state_ = State::ProgramStarting;
                ticks_ = 0;
            } else if (running != starter_ || ticks_ >= PatienceTicks) {
                state_ = State::Serving;
            }
            return true;
        case State::ProgramStarting:
            if (running != 0) state_ = State::Serving;
            return running != 0 || ticks_ < PatienceTicks;
        case State::Serving:
            return running != 0 || KeepServing();
    }
    return false;
}

// A program may have found our window just before we dropped it. If one is running now, recreate
// the window.
bool Companion::KeepServing() {
    DropCompanionWindow();
    bool gone = RunningProgram() == 0u;  // false when the search failed
    return !gone && OwnCompanionWindow();
}

}  // namespace quirkmeter
