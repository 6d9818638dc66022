// The simulator's variables as the interface module presents them: 64 KiB of bytes in which every
// variable has a fixed offset. Values of several bytes are little-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quirkmeter::practice {

class OffsetSpace {
   public:
    static constexpr std::uint32_t Size = 0x10000;

    /// True when all `size` bytes from `offset` on lie inside. Must hold for every call below.
    static constexpr bool Contains(std::uint32_t offset, std::uint32_t size) {
        return size <= Size && offset <= Size - size;
    }

    std::span<const std::byte> Bytes(std::uint32_t offset, std::uint32_t size) const;
    void Write(std::uint32_t offset, std::span<const std::byte> bytes);

    /// The number that stands in `size` (at most 8) bytes.
    std::uint64_t Value(std::uint32_t offset, std::uint32_t size) const;
    /// Stores the low `size` (at most 8) bytes of a number.
    void SetValue(std::uint32_t offset, std::uint32_t size, std::uint64_t value);

   private:
    std::array<std::byte, Size> bytes_{};
};

}  // namespace quirkmeter::practice
