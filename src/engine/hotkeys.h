// The hotkeys that work while the simulator has the keyboard.
#pragma once

namespace quirkmeter {

/// Looks at the keyboard once and runs the action of every hotkey whose combination is held, as
/// often as it is polled.
void PollHotkeys();

}  // namespace quirkmeter
