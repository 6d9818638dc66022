// The window of rehearse, which explains profiles and makes new ones.
#pragma once

#include "rehearse/options.h"

namespace quirkmeter::rehearse {

/// Shows the window, with the options' profile if there is one. Returns the program's exit code
/// once it is closed.
int RunWindow(const Options& options);

}  // namespace quirkmeter::rehearse
