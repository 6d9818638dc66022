// The settings file Quirkmeter.ini beside the executable: one KEY=value a line, ANSI text, CR LF.
#pragma once

namespace quirkmeter {

/// Fills Settings from the file; a missing file, key or number leaves the value as it is. A file
/// that is there and cannot be opened is tried again for 2 seconds, then told in a message box. False
/// when Hardcore Mode is chosen and its companion does not run yet: the program is to end at once.
bool ReadSettings();

/// Replaces the file with the current Settings, but not one that ReadSettings could not read; a
/// failure is told in a message box.
void WriteSettings();

}  // namespace quirkmeter
