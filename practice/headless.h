// The practice simulator without a window: commands come from standard input.
#pragma once

#include <memory>
#include <string>

#include "practice/simulator.h"

namespace quirkmeter::practice {

/// Prints a line on standard output at once.
void PrintLine(const std::string& line);

/// Runs until the simulator has ended. Returns why it could not start, empty when it could.
std::string RunHeadless(const std::shared_ptr<Simulator>& simulator, const std::string& className);

}  // namespace quirkmeter::practice
