// The running practice simulator: one flight on the real clock, shared by the thread that answers
// messages, the one that takes commands and the window. Every function may be called from any
// thread.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>

#include "practice/flight.h"

namespace quirkmeter::practice {

/// Called with each printed line, one at a time.
using LinePrinter = std::function<void(const std::string& line)>;

class Simulator {
   public:
    /// It ends by itself after `duration` seconds, which may be infinite.
    Simulator(Script script, double duration, LinePrinter print);

    /// Begins the flight now, with that event. Call it once, before Advance and Answer.
    void Start(const std::string& event);
    void Advance();
    void Apply(const Command& command);
    bool Answer(std::byte* block, std::size_t size);
    FlightView View();
    Misbehaviour CurrentMisbehaviour();

    bool Ended() const { return ended_; }
    void End() { ended_ = true; }

   private:
    using Clock = std::chrono::steady_clock;

    void AdvanceLocked();
    void PrintEvent(double time, const std::string& event);
    void PrintWrite(const AppliedWrite& write);

    std::atomic<bool> ended_ = false;
    std::mutex mutex_;
    LinePrinter print_;
    Flight flight_;
    double duration_;
    bool started_ = false;
    Clock::time_point start_;
};

}  // namespace quirkmeter::practice
