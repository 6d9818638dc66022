// The program's heartbeat, once a second.
#pragma once

namespace quirkmeter {

inline constexpr int TickMilliseconds = 1000;

/// Polls the hotkeys, keeps or restores the link, reads the simulator, draws failures, keeps them
/// in force and shows the status. Sends one batch of reads and one of writes, plus one per leak
/// and one when the status line goes to the simulator's screen.
void EngineTick();

}  // namespace quirkmeter
