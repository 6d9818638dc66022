#include "engine/hotkeys.h"

#include "link/actuation.h"
#include "link/sounds.h"
#include "link/status.h"
#include "model/settings.h"
#include "platform/platform.h"

namespace quirkmeter {

namespace {

constexpr int KeyShift = 16;
constexpr int KeyCtrl = 17;

bool IsDown(std::int16_t state) {
    return state < 0;
}

// One that belongs to the combination must be down; one that does not must not even have been
// tapped since it was last asked for.
bool ModifierMatches(std::int16_t state, bool wanted) {
    return wanted ? IsDown(state) : state == 0;
}

bool IsHeld(std::int32_t key, std::int32_t mods) {
    if (key == 0) return false;
    if (!IsDown(platform::GetAsyncKeyState(key))) return false;
    std::int16_t shift = platform::GetAsyncKeyState(KeyShift);
    std::int16_t ctrl = platform::GetAsyncKeyState(KeyCtrl);
    return ModifierMatches(ctrl, WithCtrl(mods)) && ModifierMatches(shift, WithShift(mods));
}

}  // namespace

void PollHotkeys() {
    if (IsHeld(Settings.StatusHotkey, Settings.StatusHotkeyMods)) ShowStatus(true);
    if (IsHeld(Settings.ClearHotkey, Settings.ClearHotkeyMods)) ClearLastFailure();
    if (IsHeld(Settings.ActiveHotkey, Settings.ActiveHotkeyMods)) ToggleActive();
}

}  // namespace quirkmeter
