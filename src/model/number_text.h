// Numbers as the program shows, saves and compares them: decimal texts of single-precision values
// with the decimal separator of the user's regional settings.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

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

/// A text that is shown, saved and compared as it stands, with the number that it reads as: the
/// text is read once, when it is set, however often its number is wanted.
class NumericText {
   public:
    NumericText& operator=(std::string text) {
        value_ = ReadNumber(text);
        text_ = std::move(text);
        return *this;
    }

    const std::string& Text() const { return text_; }
    /// The number; `other` when the text is none.
    double ValueOr(double other) const { return value_.value_or(other); }
    bool operator==(std::string_view text) const { return text_ == text; }

   private:
    std::string text_;
    std::optional<double> value_;
};

}  // namespace quirkmeter
