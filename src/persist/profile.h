// Profile files: every sub-system's reliability and hours, one line each,
// "system#sub-system#reliability#hours" and CR LF.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quirkmeter {

struct ProfileFault {
    int Line = 0;           // from 1; 0: the file itself
    std::string_view What;  // the fault, as "is not a line of a profile"
};

/// Reads a profile into the catalogue. A bad line, or a file that cannot be read, ends the reading;
/// the values of the lines before it stay.
std::optional<ProfileFault> ApplyProfile(const std::string& path);

/// Replaces the file with the catalogue's reliability data, as one step. False on failure.
bool SaveProfile(const std::string& path);

/// Writes the catalogue's reliability data to the file named by Settings.LastProfile and shows its
/// name in the heading. Reports a failure in a message box.
void WriteProfile();

/// Applies the file named by Settings.LastProfile, shows its name in the heading, recomputes the
/// failure ranges and refreshes the list. A fault empties LastProfile and is reported in a message
/// box.
void ReadProfile();

}  // namespace quirkmeter
