// The companion process without which Hardcore Mode does not run, and the price of leaving a
// flight.
#pragma once

namespace quirkmeter {

/// True when the companion's window exists. Otherwise starts the companion, says so if that failed,
/// and returns false: the program is to end at once.
bool StartHardcoreCompanion();

/// True when the companion's window exists, or when it could not be looked for. Otherwise unloads
/// the main window, with its whole closing sequence, and returns false: the program is ending.
bool CheckHardcoreCompanion();

/// What closing the main window costs under the Hardcore lock: the aircraft is moved three times,
/// one second apart. Nothing otherwise.
void LeaveFlight();

}  // namespace quirkmeter
