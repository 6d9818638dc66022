// Counts what the test program takes from the heap, so that code can be shown to need nothing.
#pragma once

#include <cstddef>

namespace quirkmeter {

/// How often memory was asked for since the program began.
std::size_t Allocations();

}  // namespace quirkmeter
