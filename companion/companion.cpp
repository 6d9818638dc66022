#include "companion.h"

namespace quirkmeter {

Companion::~Companion() {
    DropCompanionWindow();
}

bool Companion::Start() {
    return platform::ClaimSingleInstance("fsqmhc") && OwnCompanionWindow();
}

bool Companion::OwnCompanionWindow() {
    window_ = platform::OwnWindow(
        "ThunderRT6FormDC", "FSQMHC",
        [](std::uint32_t, std::uintptr_t, std::intptr_t) { return std::intptr_t{0}; });
    return window_ != 0;
}

void Companion::DropCompanionWindow() {
    if (window_ != 0) platform::DropWindow(window_);
    window_ = 0;
}

bool Companion::Tick() {
    bool running = platform::InstanceRuns("Quirkmeter");
    ++ticks_;
    switch (state_) {
        case State::ProgramEnding:
            // While the first one is ending, a second would end at once as well. One that stays was
            // started by the user, with this companion's window already there.
            if (!running) {
                std::string program = platform::ProgramFile(program_);
                platform::ShellExecuteA(0, "Open", program.c_str(), "", "", platform::ShowNormal);
                state_ = State::ProgramStarting;
                ticks_ = 0;
            } else if (ticks_ >= PatienceTicks) {
                state_ = State::Serving;
            }
            return true;
        case State::ProgramStarting:
            if (running) state_ = State::Serving;
            return running || ticks_ < PatienceTicks;
        case State::Serving:
            return running || KeepServing();
    }
    return false;
}

// The program claims its instance before it looks for the window. So one that came just now and saw
// the window is there when the window has gone, and gets it back.
bool Companion::KeepServing() {
    DropCompanionWindow();
    return platform::InstanceRuns("Quirkmeter") && OwnCompanionWindow();
}

}  // namespace quirkmeter
