#include "practice/request_block.h"

#include <algorithm>

namespace quirkmeter::practice {

namespace {

constexpr std::uint32_t EndOfRecords = 0;
constexpr std::uint32_t ReadRecord = 1;
constexpr std::uint32_t WriteRecord = 2;

constexpr std::size_t WordSize = 4;
constexpr std::size_t ReadHeaderSize = 4 * WordSize;
constexpr std::size_t WriteHeaderSize = 3 * WordSize;

// Volatile: another process may write here, so read a word once and use the value that was checked.
std::uint32_t FetchWord(const std::byte* from) {
    const volatile std::byte* bytes = from;
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < WordSize; ++i) {
        std::byte byte = bytes[i];
        word |= std::to_integer<std::uint32_t>(byte) << 8 * i;
    }
    return word;
}

void ApplyWrite(std::uint32_t offset, std::span<const std::byte> data, OffsetSpace& space,
                const WriteCallback& onWrite) {
    auto size = static_cast<std::uint32_t>(data.size());
    std::uint64_t before = space.Value(offset, std::min(size, 8u));
    space.Write(offset, data);
    onWrite({offset, space.Bytes(offset, size), before});
}

}  // namespace

bool CarryOut(std::byte* block, std::size_t size, OffsetSpace& space,
              const WriteCallback& onWrite) {
    std::size_t end = std::min(size, UsedBlockSize);
    std::size_t at = 0;
    while (end - at >= WordSize) {
        std::uint32_t identifier = FetchWord(block + at) & 0xFFFF;
        if (identifier == EndOfRecords) return true;
        if (identifier != ReadRecord && identifier != WriteRecord) return false;

        bool isRead = identifier == ReadRecord;
        std::size_t headerSize = isRead ? ReadHeaderSize : WriteHeaderSize;
        if (end - at < headerSize) return false;
        std::uint32_t offset = FetchWord(block + at + WordSize);
        std::uint32_t length = FetchWord(block + at + 2 * WordSize);
        if (length > end - at - headerSize || !OffsetSpace::Contains(offset, length)) return false;

        std::span data(block + at + headerSize, length);
        if (isRead)
            std::ranges::copy(space.Bytes(offset, length), data.begin());
        else
            ApplyWrite(offset, data, space, onWrite);
        at += headerSize + length;
    }
    return false;
}

}  // namespace quirkmeter::practice
