#include "practice/flight.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quirkmeter::practice {

namespace {

constexpr std::uint32_t CurrentModuleVersion = 0x34000000;
constexpr std::uint32_t OldModuleVersion = 0x19970000;
constexpr std::uint32_t SimulatorIdentity = 0xFADE0007;

constexpr double LongestStep = 0.125;
constexpr double GearUpAfter = 4;
constexpr double FlapsUpAfter = 8;

constexpr double BurnPerSecond = FullTank / (4 * 3600.0);  // a full tank lasts four hours
constexpr double DegreesEastPerSecond = 0.001;
constexpr double ClimbPerSecond = 8;  // metres
constexpr double CruiseAltitude = 1500;
constexpr double FieldElevation = 110;
constexpr double FieldLatitude = 50;
constexpr double FieldLongitude = 8.5;

constexpr double UnitsPerMetre = 4294967296.0;
constexpr double LatitudeUnitsPerDegree = 10001750.0 / 90 * UnitsPerMetre;
constexpr double LongitudeUnitsPerDegree = UnitsPerMetre * UnitsPerMetre / 360;

std::uint64_t Units(double amount, double unitsPerAmount) {
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(amount * unitsPerAmount));
}

}  // namespace

Flight::Flight(Script script, EventCallback onEvent)
    : script_(std::move(script)), onEvent_(std::move(onEvent)) {
    for (const Variable& variable : Variables()) {
        switch (variable.Kind) {
            case VariableKind::Autopilot:
            case VariableKind::Electrical:
            case VariableKind::Pump:
                space_.SetValue(variable.Offset, variable.Size, 1);
                break;
            case VariableKind::Lever:
                space_.SetValue(variable.Offset, variable.Size, FullLever);
                break;
            case VariableKind::Tank:
                space_.SetValue(variable.Offset, variable.Size, FullTank);
                break;
            default:
                break;
        }
    }
    space_.SetValue(offset::ModuleVersion, 4, CurrentModuleVersion);
    space_.SetValue(offset::SimulatorVersion, 4, SimulatorIdentity);
    space_.SetValue(offset::Engines, 2, 4);
    space_.SetValue(offset::OnGround, 2, 1);
    space_.SetValue(offset::Gear, 4, FullyDown);
    space_.SetValue(offset::Flaps, 4, FullyDown / 2);
    space_.SetValue(offset::Latitude, 8, Units(FieldLatitude, LatitudeUnitsPerDegree));
    space_.SetValue(offset::Longitude, 8, Units(FieldLongitude, LongitudeUnitsPerDegree));
    space_.SetValue(offset::Altitude, 8, Units(FieldElevation, UnitsPerMetre));
}

void Flight::Advance(double now) {
    while (now_ < now) {
        double before = now_;
        now_ = std::min(now, before + LongestStep);
        RunScript();
        RetractAfterTakeOff();
        FlyOn(now_ - before);
        FightBack();
    }
}

void Flight::RunScript() {
    while (nextLine_ < script_.size() && script_[nextLine_].Seconds <= now_)
        Apply(script_[nextLine_++].What);
}

void Flight::RetractAfterTakeOff() {
    if (now_ >= gearUpAt_) SetGear(false);
    if (now_ >= flapsUpAt_) SetFlaps(false);
}

void Flight::FlyOn(double seconds) {
    if (IsSet(offset::OnGround) || IsSet(offset::Pause)) return;
    BurnFuel(seconds);
    if (!IsSet(offset::Slew)) Move(seconds);
}

void Flight::BurnFuel(double seconds) {
    unburnt_ += BurnPerSecond * seconds;
    auto burnt = static_cast<std::int32_t>(unburnt_);
    unburnt_ -= burnt;
    for (const Variable& tank : VariablesOf(VariableKind::Tank)) {
        auto level = static_cast<std::int32_t>(space_.Value(tank.Offset, tank.Size));
        if (level <= 0) continue;
        std::int32_t left = std::max(0, level - burnt);
        space_.SetValue(tank.Offset, tank.Size, static_cast<std::uint32_t>(left));
    }
}

void Flight::Move(double seconds) {
    std::uint64_t longitude = space_.Value(offset::Longitude, 8);
    space_.SetValue(offset::Longitude, 8,
                    longitude + Units(DegreesEastPerSecond * seconds, LongitudeUnitsPerDegree));
    std::uint64_t altitude = space_.Value(offset::Altitude, 8);
    if (static_cast<double>(static_cast<std::int64_t>(altitude)) < CruiseAltitude * UnitsPerMetre) {
        space_.SetValue(offset::Altitude, 8,
                        altitude + Units(ClimbPerSecond * seconds, UnitsPerMetre));
    }
}

void Flight::FightBack() {
    for (const Variable* freed : effects_.LetGo(now_)) {
        switch (freed->Kind) {
            case VariableKind::Autopilot:
            case VariableKind::Electrical:
            case VariableKind::Pump:
                space_.SetValue(freed->Offset, freed->Size, 1);
                Event("pilot switched on " + FullName(*freed));
                break;
            case VariableKind::Disconnection:
                space_.SetValue(freed->Offset, freed->Size, 0);
                Event("controls connected again");
                break;
            case VariableKind::Lever:
                space_.SetValue(freed->Offset, freed->Size, FullLever);
                Event("pilot pushed forward " + FullName(*freed));
                break;
            default:
                break;
        }
    }
}

void Flight::Apply(const Command& command) {
    switch (command.Action) {
        case Verb::TakeOff:
            return TakeOff();
        case Verb::Land:
            return Land();
        case Verb::Pause:
            return SetPaused(true);
        case Verb::Resume:
            return SetPaused(false);
        case Verb::Gear:
            return SetGear(command.Value != 0);
        case Verb::Flaps:
            return SetFlaps(command.Value != 0);
        case Verb::Engines:
            return SetEngines(command.Value);
        case Verb::Fuel:
            return SetFuel(command.Value, command.Percent);
        case Verb::Misbehave:
            return Misbehave(static_cast<Misbehaviour>(command.Value));
        case Verb::Quit:
            ended_ = true;
            return Event("quit");
    }
}

void Flight::TakeOff() {
    if (!IsSet(offset::OnGround)) return;
    space_.SetValue(offset::OnGround, 2, 0);
    gearUpAt_ = now_ + GearUpAfter;
    flapsUpAt_ = now_ + FlapsUpAfter;
    Event("took off");
}

void Flight::Land() {
    if (IsSet(offset::OnGround)) return;
    SetGear(true);
    SetFlaps(true);
    space_.SetValue(offset::Altitude, 8, Units(FieldElevation, UnitsPerMetre));
    space_.SetValue(offset::OnGround, 2, 1);
    Event("landed");
}

void Flight::SetPaused(bool paused) {
    space_.SetValue(offset::Pause, 2, paused);
    Event(paused ? "paused" : "resumed");
}

void Flight::SetGear(bool down) {
    gearUpAt_ = Never;
    space_.SetValue(offset::Gear, 4, down ? FullyDown : 0);
    Event(down ? "gear down" : "gear up");
}

void Flight::SetFlaps(bool down) {
    flapsUpAt_ = Never;
    space_.SetValue(offset::Flaps, 4, down ? FullyDown : 0);
    Event(down ? "flaps down" : "flaps up");
}

void Flight::SetEngines(int count) {
    space_.SetValue(offset::Engines, 2, static_cast<std::uint32_t>(count));
    Event("engines " + std::to_string(count));
}

void Flight::SetFuel(int tank, int percent) {
    const Variable& variable = VariablesOf(VariableKind::Tank)[static_cast<std::size_t>(tank - 1)];
    double level = FullTank * (percent / 100.0);
    space_.SetValue(variable.Offset, variable.Size, static_cast<std::uint32_t>(std::ceil(level)));
    Event(std::string("fuel ") + variable.Name + " " + std::to_string(percent) + " %");
}

void Flight::Misbehave(Misbehaviour kind) {
    misbehaviour_ = kind;
    bool old = kind == Misbehaviour::Old;
    space_.SetValue(offset::ModuleVersion, 4, old ? OldModuleVersion : CurrentModuleVersion);
    Event(std::string("misbehave ") + MisbehaviourNames[static_cast<int>(kind)]);
}

bool Flight::Answer(std::byte* block, std::size_t size, const WriteCallback& onWrite) {
    return CarryOut(block, size, space_, [&](const AppliedWrite& write) {
        effects_.Note(write, space_, now_);
        onWrite(write);
    });
}

FlightView Flight::View() const {
    auto signedValue = [this](std::uint32_t at) {
        return static_cast<double>(static_cast<std::int64_t>(space_.Value(at, 8)));
    };
    FlightView view{};
    view.Airborne = !IsSet(offset::OnGround);
    view.Paused = IsSet(offset::Pause);
    view.GearDown = space_.Value(offset::Gear, 4) != 0;
    view.FlapsDown = space_.Value(offset::Flaps, 4) != 0;
    view.Slewing = IsSet(offset::Slew);
    view.Engines = static_cast<int>(space_.Value(offset::Engines, 2));
    for (const Variable& tank : VariablesOf(VariableKind::Tank))
        view.FuelPercent.push_back(FuelPercent(space_, tank));
    view.CurrentMisbehaviour = misbehaviour_;
    view.Latitude = signedValue(offset::Latitude) / LatitudeUnitsPerDegree;
    view.Longitude = signedValue(offset::Longitude) / LongitudeUnitsPerDegree;
    view.Altitude = signedValue(offset::Altitude) / UnitsPerMetre;
    view.Lamps = effects_.Lamps(space_);
    view.ScreenText = effects_.ScreenText(now_);
    return view;
}

}  // namespace quirkmeter::practice
