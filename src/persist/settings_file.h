// The settings file Quirkmeter.ini beside the executable: one KEY=value a line, ANSI text, CR LF.
#pragma once

namespace quirkmeter {

/// Fills Settings from the file; a missing file, key or number leaves the value as it is. Retries for
/// 2 seconds to open an existing file, then reports the failure in a message box. False when Hardcore
/// Mode is chosen and its companion does not run yet: the program must end at once.
bool ReadSettings();

/// Replaces the file with the current Settings, unless ReadSettings could not read it. Reports a
/// failure in a message box.
void WriteSettings();

}  // namespace quirkmeter
