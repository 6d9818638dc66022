// The companion process that Hardcore Mode requires, and the price of leaving a flight.
#pragma once

namespace quirkmeter {

/// True when the companion's window exists. Otherwise starts the companion, reports a failure in a
/// message box and returns false: the program must end at once.
bool StartHardcoreCompanion();

/// True when the companion's window exists, or when it could not be looked for. Otherwise unloads
/// the main window, with its whole closing sequence, and returns false: the program is ending.
bool CheckHardcoreCompanion();

/// Under the Hardcore lock, moves the aircraft three times, one second apart: the price of closing
/// the main window. Otherwise does nothing.
void LeaveFlight();

}  // namespace quirkmeter
