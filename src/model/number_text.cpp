#include "model/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "platform/platform.h"

namespace quirkmeter {

namespace {

std::string_view Trimmed(std::string_view text) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    while (text.ends_with(' ')) text.remove_suffix(1);
    return text;
}

}  // namespace

std::string NumberText(float value) {
    // Seven significant digits first, then the same value without an exponent.
    char rounded[32];
    auto [end, error] =
        std::to_chars(rounded, rounded + sizeof rounded, value, std::chars_format::scientific, 6);
    double decimal = 0;
    std::from_chars(rounded, end, decimal);
    if (decimal == 0) return "0";

    char text[128];
    end = std::to_chars(text, text + sizeof text, decimal, std::chars_format::fixed).ptr;
    std::replace(text, end, '.', platform::DecimalSeparator());
    return {text, end};
}

std::optional<double> ReadPointNumber(std::string_view text) {
    text = Trimmed(text);
    bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    // from_chars also takes "inf", "nan" and a sign of its own, and leaves what is behind a number.
    if (text.find_first_of("0123456789.") != 0) return std::nullopt;

    double value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() ||
        value > std::numeric_limits<float>::max())
        return std::nullopt;
    return negative ? -value : value;
}

std::optional<double> ReadNumber(std::string_view text) {
    char separator = platform::DecimalSeparator();
    if (separator == '.') return ReadPointNumber(text);
    if (text.find('.') != text.npos) return std::nullopt;
    std::string pointed(text);
    std::replace(pointed.begin(), pointed.end(), separator, '.');
    return ReadPointNumber(pointed);
}

}  // namespace quirkmeter
