// The simulator's side of the protocol: the window that clients look for, and the answers to their
// messages.
#pragma once

#include <cstdint>
#include <string>

#include "platform/platform.h"
#include "practice/simulator.h"

namespace quirkmeter::practice {

/// Use it from one thread.
class Wire {
   public:
    Wire(Simulator& simulator, std::string className);

    /// Makes the window and starts the flight. Returns why it could not, empty when it could: another
    /// practice simulator of the user runs, or the window could not be made.
    std::string Open();
    /// Answers messages until the simulator has ended, or the process was asked to end, then drops
    /// the window.
    void Serve();

   private:
    bool Ended();
    bool MakeWindow();
    void KeepOrDropWindow();
    std::intptr_t Answer(std::uint32_t message, std::uintptr_t wParam);
    bool WaitBeforeAnswer();
    bool CarryOutBlock(std::uint16_t atom);

    Simulator& simulator_;
    std::string className_;
    std::uint32_t message_ = 0;
    platform::WindowHandle window_ = 0;
};

}  // namespace quirkmeter::practice
