// The status line, in the window and on the simulator's screen.
#pragma once

#include <string_view>

namespace quirkmeter {

/// Shows a line on the simulator's screen for 5 seconds, behind "QM:  " and cut to the 127 bytes
/// that the simulator's text has room for.
void ShowSimMessage(std::string_view text);

/// Finishes EngineState.StatusText (unless forced: the failures' names, the Hardcore Mode ending), puts
/// it into the label and, if the user wishes, on the simulator's screen. An unchanged line does
/// nothing, unless forced: then it is shown in both again, whatever the user's setting.
void ShowStatus(bool force);

}  // namespace quirkmeter
