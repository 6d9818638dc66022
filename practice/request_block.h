// The block of request records that a client shares with the interface module:
//
//   read    identifier 1, offset, size, a word of the client's own, `size` bytes for the answer
//   write   identifier 2, offset, size, the `size` bytes to write
//   end     identifier 0
//
// Every header field is a little-endian 32-bit word; of the identifier only the low 16 bits count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "practice/offset_space.h"

namespace quirkmeter::practice {

/// A block holds records, the end included, in its first 32512 bytes only.
inline constexpr std::size_t UsedBlockSize = 0x7F00;

struct AppliedWrite {
    std::uint32_t Offset;
    std::span<const std::byte> Bytes;  // as they stand in the offset space now
    std::uint64_t Before;              // what the first 8 bytes (or fewer) held until now
};

using WriteCallback = std::function<void(const AppliedWrite&)>;

/// Carries out the records in order, filling the answers in place, and calls `onWrite` after each
/// write. `block` is `size` accessible bytes and may be anything, and change at any moment. False
/// when it is malformed: the records before the bad one are then carried out, the rest is not.
bool CarryOut(std::byte* block, std::size_t size, OffsetSpace& space, const WriteCallback& onWrite);

}  // namespace quirkmeter::practice
