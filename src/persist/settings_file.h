// The settings file Quirkmeter.ini beside the executable: one KEY=value a line, ANSI text, CR LF.
#pragma once

namespace quirkmeter {

/// Fills Settings from the file; a missing or unreadable file, key or number leaves the value as it
/// is. False when Hardcore Mode is chosen and its companion does not run yet: the program is to end
/// at once.
bool ReadSettings();

/// Replaces the file with the current Settings; a failure is told in a message box and leaves the
/// old file whole.
void WriteSettings();

}  // namespace quirkmeter
