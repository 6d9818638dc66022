#include "engine/hotkeys.h"

#include "link/actuation.h"
#include "link/sounds.h"
#include "link/status.h"
#include "model/engine_state.h"
#include "platform/platform.h"

namespace quirkmeter {

namespace {

constexpr int KeyShift = 16;
constexpr int KeyCtrl = 17;

bool IsDown(std::int16_t state) {
    return state < 0;
}

// A modifier of the combination must be down. Any other one must be up, and not tapped since the
// last poll.
bool ModifierMatches(std::int16_t state, bool wanted) {
    return wanted ? IsDown(state) : state == 0;
}

bool IsHeld(const Hotkey& hotkey) {
    if (hotkey.Key == 0) return false;
    if (!IsDown(platform::GetAsyncKeyState(hotkey.Key))) return false;
    std::int16_t shift = platform::GetAsyncKeyState(KeyShift);
    std::int16_t ctrl = platform::GetAsyncKeyState(KeyCtrl);
    return ModifierMatches(ctrl, hotkey.WithCtrl()) && ModifierMatches(shift, hotkey.WithShift());
}

// Suspends or resumes failure drawing. Only a sound tells the user.
void ToggleActive() {
    if (HardcoreLock()) return;
    EngineState.Deactivated = !EngineState.Deactivated;
    PlaySoundFile(EngineState.Deactivated ? SoundWarning : SoundOk);
}

}  // namespace

void PollHotkeys() {
    if (IsHeld(Settings.StatusHotkey)) ShowStatus(true);
    if (IsHeld(Settings.ClearHotkey)) ClearLastFailure();
    if (IsHeld(Settings.ActiveHotkey)) ToggleActive();
}

}  // namespace quirkmeter
