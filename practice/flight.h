// The flight: the aircraft's state in the offset space, the script it follows, and a pilot who
// fights back against what a client does.
//
// The pilot's rules are simple and the same at every hour:
//   - a switch written 0 stays off for as long as such writes keep coming; HoldSeconds after the
//     last one it is switched on again
//   - disconnected controls work again HoldSeconds after the last such write
//   - a lever that was cut is pushed forward again CutSeconds later
//   - the gear is raised 4 and the flaps 8 seconds after take-off, and then left as they are
// The pilot and the script go by the clock, also while the flight is paused.
#pragma once

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "practice/command.h"
#include "practice/effects.h"
#include "practice/offset_space.h"

namespace quirkmeter::practice {

/// Everything that a window shows.
struct FlightView {
    bool Airborne;
    bool Paused;
    bool GearDown;
    bool FlapsDown;
    bool Slewing;
    int Engines;
    std::vector<int> FuelPercent;  // by tank
    Misbehaviour CurrentMisbehaviour;
    double Latitude;   // degrees, north positive
    double Longitude;  // degrees, east positive
    double Altitude;   // metres
    std::vector<LampRow> Lamps;
    std::string ScreenText;
};

class Flight {
   public:
    using EventCallback = std::function<void(double time, const std::string& event)>;

    /// Stands on the ground, gear down, tanks full, everything switched on, at time 0.
    Flight(Script script, EventCallback onEvent);

    /// Lets the time since the last call pass; `now` is in seconds since the start.
    void Advance(double now);

    /// Carries out a command at the time of the last Advance.
    void Apply(const Command& command);

    /// Carries out a block of requests at the time of the last Advance, see CarryOut.
    bool Answer(std::byte* block, std::size_t size, const WriteCallback& onWrite);

    FlightView View() const;
    Misbehaviour CurrentMisbehaviour() const { return misbehaviour_; }
    double Now() const { return now_; }
    bool Ended() const { return ended_; }  // by a quit command

   private:
    static constexpr double Never = std::numeric_limits<double>::infinity();

    bool IsSet(std::uint32_t flagOffset) const { return space_.Value(flagOffset, 2) != 0; }
    void Event(const std::string& event) { onEvent_(now_, event); }

    void RunScript();
    void RetractAfterTakeOff();
    void FlyOn(double seconds);
    void BurnFuel(double seconds);
    void Move(double seconds);
    void FightBack();

    void TakeOff();
    void Land();
    void SetPaused(bool paused);
    void SetGear(bool down);
    void SetFlaps(bool down);
    void SetEngines(int count);
    void SetFuel(int tank, int percent);
    void Misbehave(Misbehaviour kind);

    OffsetSpace space_;
    Effects effects_;
    Script script_;
    std::size_t nextLine_ = 0;
    EventCallback onEvent_;
    double now_ = 0;
    double gearUpAt_ = Never;
    double flapsUpAt_ = Never;
    double unburnt_ = 0;  // fuel used that does not make a whole unit yet
    Misbehaviour misbehaviour_ = Misbehaviour::None;
    bool ended_ = false;
};

}  // namespace quirkmeter::practice
