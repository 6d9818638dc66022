// The window in which a profile is understood and made.
#pragma once

#include "rehearse/options.h"

namespace quirkmeter::rehearse {

/// Shows the window, with the options' profile if there is one. Returns the program's exit code
/// once it is closed.
int RunWindow(const Options& options);

}  // namespace quirkmeter::rehearse
