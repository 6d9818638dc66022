// The lines that the practice simulator prints without a window.
#pragma once

#include <string>

#include "practice/request_block.h"

namespace quirkmeter::practice {

/// "TIME # EVENT", the time in seconds with three digits.
std::string EventLine(double time, const std::string& event);

/// "TIME OFFSET SIZE VALUE NAME". The value is a decimal number for 1, 2 and 4 bytes, a text in
/// double quotes for the message text (quotes, backslashes and unprintable bytes as \xHH), a dash
/// for no bytes and hexadecimal bytes for every other size. The name is "?" where there is none.
std::string WriteLine(double time, const AppliedWrite& write);

}  // namespace quirkmeter::practice
