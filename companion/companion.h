// The Hardcore Mode companion. It keeps the window that Quirkmeter looks for as long as the program
// runs, and starts the program a second time, which saves the user a double-click.
#pragma once

#include "platform/platform.h"

namespace quirkmeter {

class Companion {
   public:
    /// The ticks for which the companion waits for the program to end or to appear.
    static constexpr int PatienceTicks = 30;

    /// `program` is the program's file with its leading backslash.
    explicit Companion(const char* program) : program_(program) {}
    ~Companion();
    Companion(const Companion&) = delete;

    /// Shows the window that the program looks for. Taken when another companion runs already,
    /// Failed when the window could not be made.
    platform::InstanceClaim Start();

    /// Call it once a second. False when the companion must end.
    bool Tick();

   private:
    enum class State {
        ProgramEnding,    // the program that started the companion may still be there
        ProgramStarting,  // started again, not seen yet
        Serving,
    };

    bool OwnCompanionWindow();
    void DropCompanionWindow();
    bool KeepServing();

    const char* program_;
    platform::WindowHandle window_ = 0;
    std::uint32_t starter_ = 0;  // the program that ran when the window had been made
    State state_ = State::ProgramEnding;
    int ticks_ = 0;  // in this state
};

}  // namespace quirkmeter
