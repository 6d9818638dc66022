// The effects of the client on the aircraft: the writes in force, as lamps of an annunciator panel,
// and the text on the simulator's screen.
#pragma once

#include <string>
#include <vector>

#include "practice/offset_space.h"
#include "practice/request_block.h"
#include "practice/variables.h"

namespace quirkmeter::practice {

/// Seconds for which a switch, a control, a disconnection bit or a tank counts as held by the
/// client after its last write.
inline constexpr double HoldSeconds = 2.5;

/// Seconds for which an engine's lever stays cut.
inline constexpr double CutSeconds = 30;

enum class Light { Dark, Amber, Red };  // amber: held, cut or draining; red: failed, disconnected

struct Lamp {
    std::string Text;  // as Quirkmeter names what has failed
    Light State;
    bool operator==(const Lamp&) const = default;
};

struct LampRow {
    const char* Title;
    std::vector<Lamp> Lamps;
};

/// All times are seconds since the start and never run backwards.
class Effects {
   public:
    Effects();

    /// Records a write that is already in the space.
    void Note(const AppliedWrite& write, const OffsetSpace& space, double now);

    /// Releases the variables that were held until `now` and returns them.
    std::vector<const Variable*> LetGo(double now);

    /// The text on the simulator's screen, empty for none.
    std::string ScreenText(double now) const;

    std::vector<LampRow> Lamps(const OffsetSpace& space) const;

   private:
    bool Held(const Variable& variable) const;
    std::vector<Lamp> HeldLamps(VariableKind kind) const;
    std::vector<Lamp> TankLamps() const;

    std::vector<double> heldUntil_;  // by the variable's place in Variables(), 0: not held
    std::string screenText_;
    double screenUntil_ = 0;
};

/// The level of a tank in percent, limited to 0 to 100.
int FuelPercent(const OffsetSpace& space, const Variable& tank);

}  // namespace quirkmeter::practice
