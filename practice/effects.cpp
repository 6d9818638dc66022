#include "practice/effects.h"

#include <algorithm>
#include <cmath>

namespace quirkmeter::practice {

namespace {

// True when a write of a whole variable is a failure while it is repeated.
bool Holds(VariableKind kind, std::uint64_t value, std::uint64_t before) {
    switch (kind) {
        case VariableKind::Autopilot:
        case VariableKind::Control:
        case VariableKind::Electrical:
        case VariableKind::Pump:
        case VariableKind::Lever:
            return value == 0;
        case VariableKind::Tank:
            return value == 0 || value < before;
        case VariableKind::Disconnection:
            return value != 0;
        default:
            return false;
    }
}

std::size_t PlaceOf(const Variable& variable) {
    return static_cast<std::size_t>(&variable - Variables().data());
}

std::string TextAt(const OffsetSpace& space, const Variable& variable) {
    std::string text;
    for (std::byte byte : space.Bytes(variable.Offset, variable.Size)) {
        if (byte == std::byte{0}) break;
        text += std::to_integer<char>(byte);
    }
    return text;
}

std::vector<Lamp> FlagLamps(const OffsetSpace& space, VariableKind kind) {
    std::vector<Lamp> lamps;
    for (const Variable& flag : VariablesOf(kind)) {
        bool failed = space.Value(flag.Offset, flag.Size) != 0;
        lamps.push_back({flag.Name, failed ? Light::Red : Light::Dark});
    }
    return lamps;
}

std::vector<Lamp> BitLamps(std::uint64_t bits, std::initializer_list<const char*> names) {
    std::vector<Lamp> lamps;
    for (const char* name : names) {
        lamps.push_back({name, bits & 1 ? Light::Red : Light::Dark});
        bits >>= 1;
    }
    return lamps;
}

std::vector<Lamp> LeverLamps(const OffsetSpace& space) {
    std::vector<Lamp> lamps;
    for (const Variable& lever : VariablesOf(VariableKind::Lever)) {
        bool cut = space.Value(lever.Offset, lever.Size) == 0;
        lamps.push_back({std::string(lever.Name) + " (Stall)", cut ? Light::Amber : Light::Dark});
    }
    return lamps;
}

std::vector<Lamp> Joined(std::vector<Lamp> first, const std::vector<Lamp>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::vector<Lamp> ByName(std::vector<Lamp> lamps) {
    std::ranges::sort(lamps, {}, &Lamp::Text);
    return lamps;
}

}  // namespace

Effects::Effects() : heldUntil_(Variables().size()) {}

void Effects::Note(const AppliedWrite& write, const OffsetSpace& space, double now) {
    const Variable* variable = FindVariable(write.Offset);
    if (!variable || write.Bytes.size() != variable->Size) return;
    if (variable->Kind == VariableKind::MessageText) return;
    std::uint64_t value = space.Value(variable->Offset, variable->Size);
    if (variable->Kind == VariableKind::MessageSeconds) {
        screenText_ = TextAt(space, *FindVariable(offset::MessageText));
        screenUntil_ = now + static_cast<std::int16_t>(value);
        return;
    }
    double seconds = variable->Kind == VariableKind::Lever ? CutSeconds : HoldSeconds;
    bool holds = Holds(variable->Kind, value, write.Before);
    heldUntil_[PlaceOf(*variable)] = holds ? now + seconds : 0;
}

std::vector<const Variable*> Effects::LetGo(double now) {
    std::vector<const Variable*> freed;
    for (const Variable& variable : Variables()) {
        double& until = heldUntil_[PlaceOf(variable)];
        if (until == 0 || now < until) continue;
        until = 0;
        freed.push_back(&variable);
    }
    return freed;
}

std::string Effects::ScreenText(double now) const {
    return now < screenUntil_ ? screenText_ : std::string();
}

bool Effects::Held(const Variable& variable) const {
    return heldUntil_[PlaceOf(variable)] != 0;
}

std::vector<Lamp> Effects::HeldLamps(VariableKind kind) const {
    std::vector<Lamp> lamps;
    for (const Variable& variable : VariablesOf(kind))
        lamps.push_back({variable.Name, Held(variable) ? Light::Amber : Light::Dark});
    return lamps;
}

std::vector<Lamp> Effects::TankLamps() const {
    std::vector<Lamp> lamps = HeldLamps(VariableKind::Tank);
    for (Lamp& lamp : lamps) lamp.Text = "Tank " + lamp.Text + " (Leak)";
    return lamps;
}

std::vector<LampRow> Effects::Lamps(const OffsetSpace& space) const {
    std::uint64_t disconnected = space.Value(offset::Disconnection, 1);
    std::uint64_t engines = space.Value(offset::EngineFailures, 1);
    return {
        {"Autopilot", HeldLamps(VariableKind::Autopilot)},
        {"Control",
         ByName(Joined(BitLamps(disconnected, {"Elevator", "Aileron", "Rudder", "Throttle"}),
                       HeldLamps(VariableKind::Control)))},
        {"Electrical", Joined(HeldLamps(VariableKind::Electrical),
                              FlagLamps(space, VariableKind::SystemFailure))},
        {"Engine", ByName(Joined(BitLamps(engines, {"Engine 1 (Fail)", "Engine 2 (Fail)",
                                                    "Engine 3 (Fail)", "Engine 4 (Fail)"}),
                                 LeverLamps(space)))},
        {"Fuel", Joined(HeldLamps(VariableKind::Pump), TankLamps())},
        {"Instrument", FlagLamps(space, VariableKind::Instrument)},
        {"Radio", FlagLamps(space, VariableKind::Radio)},
    };
}

int FuelPercent(const OffsetSpace& space, const Variable& tank) {
    auto level = static_cast<std::int32_t>(space.Value(tank.Offset, tank.Size));
    double part = static_cast<double>(level) / FullTank;
    return static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * 100));
}

}  // namespace quirkmeter::practice
