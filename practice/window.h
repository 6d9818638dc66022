// The practice simulator's window: the cockpit to work with, and below it what a client has done.
#pragma once

#include <string>

#include "practice/simulator.h"

class wxFrame;

namespace quirkmeter::practice {

/// Makes the window, which is not shown yet; it closes itself when the simulator has ended.
wxFrame* MakeFrame(Simulator& simulator);

/// Shows the window and runs until it is closed or the simulator has ended. Returns why it could not
/// start, which a message box has shown where there is a display; empty when it could.
std::string RunWindow(Simulator& simulator, const std::string& className);

}  // namespace quirkmeter::practice
