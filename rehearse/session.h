// A rehearsal from the profile's file to its finished flights, whoever watches it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "rehearse/options.h"
#include "rehearse/report.h"

namespace quirkmeter::rehearse {

/// Reads the profile into the catalogue, with the decimal separator of the user's regional settings.
/// The fault as "FILE:LINE: WHAT" when there is one.
std::optional<std::string> LoadProfile(const std::string& path);

/// Flies the plan on all processors, with the profile of the options, which was loaded.
/// `goesOn(share)` is asked a few times a second, with the share of the flights flown so far; when
/// it says no, those make the rehearsal. The toolkit must be initialized.
Rehearsal Fly(const Options& options, const std::function<bool(double share)>& goesOn);

/// Writes a report's file as one step. False when it could not be written.
bool WriteReport(const std::string& path, const std::string& report);

}  // namespace quirkmeter::rehearse
