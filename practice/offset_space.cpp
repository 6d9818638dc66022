#include "practice/offset_space.h"

#include <algorithm>

namespace quirkmeter::practice {

std::span<const std::byte> OffsetSpace::Bytes(std::uint32_t offset, std::uint32_t size) const {
    return std::span(bytes_).subspan(offset, size);
}

void OffsetSpace::Write(std::uint32_t offset, std::span<const std::byte> bytes) {
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + offset);
}

std::uint64_t OffsetSpace::Value(std::uint32_t offset, std::uint32_t size) const {
    std::uint64_t value = 0;
    for (std::uint32_t i = size; i-- > 0;)
        value = value << 8 | std::to_integer<std::uint64_t>(bytes_[offset + i]);
    return value;
}

void OffsetSpace::SetValue(std::uint32_t offset, std::uint32_t size, std::uint64_t value) {
    for (std::uint32_t i = 0; i < size; ++i)
        bytes_[offset + i] = static_cast<std::byte>(value >> 8 * i);
}

}  // namespace quirkmeter::practice
