// Rehearsal by mouse, for who never opens a terminal.
#pragma once

#include "rehearse/options.h"

namespace quirkmeter::rehearse {

/// Asks for a profile unless there is one, flies with a progress dialog, writes the report beside
/// the profile and opens it. Tells what fails in message boxes. Returns the program's exit code.
int RunWindow(const Options& options);

}  // namespace quirkmeter::rehearse
