// Numbers as the program shows, saves and compares them: decimal texts of single-precision values
// with the decimal separator of the user's regional settings.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quirkmeter {

/// At most seven significant digits, no exponent, no trailing zeros, no separator in a whole
/// number: 100, 99.999, 0.5. `value` must be finite.
std::string NumberText(float value);

/// Reads a number with blanks around it ignored: an optional sign, digits with at most one decimal
/// separator of the regional settings, an optional decimal exponent. Nothing else is a number, nor
/// is what single precision cannot hold.
std::optional<double> ReadNumber(std::string_view text);

/// The same with a point as the separator, whatever the regional settings.
std::optional<double> ReadPointNumber(std::string_view text);

}  // namespace quirkmeter
