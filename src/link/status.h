// The status line: its texts, in the window and on the simulator's screen.
#pragma once

#include <string_view>

namespace quirkmeter {

/// Shows a line on the simulator's screen for 5 seconds, behind "QM:  " and cut to the 127 bytes
/// that the simulator's text has room for.
void ShowSimMessage(std::string_view text);

/// Sets EngineState.StatusText to the state of the link.
void DescribeConnection();

/// Sets EngineState.StatusText to the state of the flight, on hold or operational, and the number of
/// failures.
void DescribeFlight();

/// Appends the names of the failures, newest first, or the Hardcore Mode ending. Call it once for
/// each line.
void FinishStatus();

/// Puts EngineState.StatusText into the label and, if the user wishes, on the simulator's screen,
/// when it differs from the line shown last. `force` shows it in both, whatever that line and the
/// user's wish.
void ShowStatus(bool force);

}  // namespace quirkmeter
