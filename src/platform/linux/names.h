// Names of windows and atoms are compared without case. Only ASCII letters have case here, so that
// processes with different locales agree.
#pragma once

#include <algorithm>
#include <string_view>

namespace quirkmeter::platform {

inline char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool EqualNames(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, Lower, Lower);
}

}  // namespace quirkmeter::platform
