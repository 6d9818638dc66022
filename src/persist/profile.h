// Profile files: every sub-system's reliability and hours, one line each,
// "system#sub-system#reliability#hours" and CR LF.
#pragma once

namespace quirkmeter {

/// Writes the catalogue's reliability data to the file named by Settings.LastProfile and shows its
/// name in the heading. The old file is whole until the new one is. A failure is told in a message
/// box.
void WriteProfile();

/// Reads the file named by Settings.LastProfile into the catalogue, shows its name in the heading
/// and refreshes the list. A bad line, or a file that cannot be read, ends the reading with a message
/// box and empties LastProfile; what the lines before it said stays.
void ReadProfile();

}  // namespace quirkmeter
