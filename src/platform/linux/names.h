// Names of windows and atoms compare without letter case. Only ASCII letters have one here: the
// answer must be the same in all processes, whatever their locales.
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
