// The files that a rehearsal reads and writes.
#pragma once

#include <optional>
#include <string>

namespace quirkmeter::rehearse {

/// The path that stands for standard output.
inline constexpr char StandardOutput[] = "-";

/// Reads the profile into the catalogue. Returns the fault when there is one, as "line 2 of bad.qmp is
/// not a line of a profile".
std::optional<std::string> LoadProfile(const std::string& path);

/// The name of the path's file, in UTF-8.
std::string NameInUtf8(const std::string& path);

/// True when WriteReport is likely to succeed there. Changes nothing.
bool CanWriteReport(const std::string& path);

/// Replaces the file as one step. Writes directly to standard output, a device or a pipe. False on
/// failure.
bool WriteReport(const std::string& path, const std::string& report);

}  // namespace quirkmeter::rehearse
