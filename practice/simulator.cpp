#include "practice/simulator.h"

#include <utility>

#include "practice/write_line.h"

namespace quirkmeter::practice {

Simulator::Simulator(Script script, double duration, LinePrinter print)
    : print_(std::move(print)),
      flight_(std::move(script),
              [this](double time, const std::string& event) { PrintEvent(time, event); }),
      duration_(duration) {}

void Simulator::Start(const std::string& event) {
    std::lock_guard lock(mutex_);
    start_ = Clock::now();
    started_ = true;
    PrintEvent(0, event);
}

void Simulator::Advance() {
    std::lock_guard lock(mutex_);
    AdvanceLocked();
}

void Simulator::AdvanceLocked() {
    if (!started_) return;
    flight_.Advance(std::chrono::duration<double>(Clock::now() - start_).count());
    if (flight_.Ended() || flight_.Now() >= duration_) End();
}

void Simulator::Apply(const Command& command) {
    std::lock_guard lock(mutex_);
    AdvanceLocked();
    flight_.Apply(command);
    if (flight_.Ended()) End();
}

bool Simulator::Answer(std::byte* block, std::size_t size) {
    std::lock_guard lock(mutex_);
    AdvanceLocked();
    return flight_.Answer(block, size, [this](const AppliedWrite& write) { PrintWrite(write); });
}

FlightView Simulator::View() {
    std::lock_guard lock(mutex_);
    return flight_.View();
}

Misbehaviour Simulator::CurrentMisbehaviour() {
    std::lock_guard lock(mutex_);
    AdvanceLocked();
    return flight_.CurrentMisbehaviour();
}

void Simulator::PrintEvent(double time, const std::string& event) {
    print_(EventLine(time, event));
}

void Simulator::PrintWrite(const AppliedWrite& write) {
    print_(WriteLine(flight_.Now(), write));
}

}  // namespace quirkmeter::practice
