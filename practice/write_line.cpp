#include "practice/write_line.h"

#include <cstdio>

#include "practice/variables.h"

namespace quirkmeter::practice {

namespace {

template <typename... Values>
std::string Format(const char* format, Values... values) {
    char text[64];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string Quoted(std::span<const std::byte> bytes) {
    std::string text = "\"";
    for (std::byte byte : bytes) {
        auto code = std::to_integer<unsigned>(byte);
        if (code == 0) break;
        bool plain = code >= ' ' && code <= '~' && code != '"' && code != '\\';
        text += plain ? std::string(1, static_cast<char>(code)) : Format("\\x%02X", code);
    }
    return text + '"';
}

std::string Number(std::span<const std::byte> bytes) {
    unsigned long value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        value = value << 8 | std::to_integer<unsigned long>(bytes[i]);
    return std::to_string(value);
}

std::string HexBytes(std::span<const std::byte> bytes) {
    if (bytes.empty()) return "-";
    std::string text;
    for (std::byte byte : bytes) text += Format("%02X", std::to_integer<unsigned>(byte));
    return text;
}

std::string ValueText(const AppliedWrite& write) {
    if (write.Offset == offset::MessageText) return Quoted(write.Bytes);
    std::size_t size = write.Bytes.size();
    return size == 1 || size == 2 || size == 4 ? Number(write.Bytes) : HexBytes(write.Bytes);
}

}  // namespace

std::string EventLine(double time, const std::string& event) {
    return Format("%.3f # ", time) + event;
}

std::string WriteLine(double time, const AppliedWrite& write) {
    const Variable* variable = FindVariable(write.Offset);
    return Format("%.3f 0x%04X ", time, write.Offset) + std::to_string(write.Bytes.size()) + " " +
           ValueText(write) + " " + (variable ? FullName(*variable) : "?");
}

}  // namespace quirkmeter::practice
