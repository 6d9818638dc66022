// The hotkeys, which work while the simulator has the focus.
#pragma once

namespace quirkmeter {

/// Polls the keyboard once and runs the action of each hotkey whose combination is held. A held
/// combination acts at every poll.
void PollHotkeys();

}  // namespace quirkmeter
