// The window of rehearse, which explains profiles and makes new ones.
#pragma once

#include <string>

class wxFrame;

namespace quirkmeter::rehearse {

/// Makes the window, which is not shown yet and has no profile.
wxFrame* MakeFrame();

/// Shows the window with the profile, unless its path is empty. Returns the program's exit code
/// once the window is closed.
int RunWindow(const std::string& profile);

}  // namespace quirkmeter::rehearse
