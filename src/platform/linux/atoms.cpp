// Atoms and registered messages: a file each, an array of slots in which the place of a name is its
// number. A slot is written by one call and lies within one page, so that it is either old or new
// when a process is killed; nothing read from the file is believed beyond that.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

#include "platform/linux/last_error.h"
#include "platform/linux/names.h"
#include "platform/linux/runtime_folder.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr int FirstNumber = 0xC000;
constexpr int SlotCount = 0x4000;
constexpr std::size_t MostNameBytes = 255;

struct Slot {
    std::uint32_t Count;  // 0: free
    char Name[MostNameBytes + 1];
    char Unused[252];

    bool IsUsed() const { return Count != 0 && memchr(Name, '\0', sizeof Name); }
};
static_assert(sizeof(Slot) == 512);

// Empty when there is none, with the last error set. Only to be used under the folder's lock.
FileDescriptor OpenTable(const FolderLock& lock, const char* table) {
    if (!lock) return FileDescriptor();
    FileDescriptor file = OpenIn(lock.Folder(), table, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK);
    if (!file) SetLastError(ErrorNotEnoughMemory);
    return file;
}

// Nothing behind the end of the table.
std::optional<Slot> ReadSlot(const FileDescriptor& table, int index) {
    Slot slot;
    off_t place = static_cast<off_t>(sizeof slot) * index;
    if (pread(table.Number(), &slot, sizeof slot, place) != sizeof slot) return std::nullopt;
    return slot;
}

bool WriteSlot(const FileDescriptor& table, int index, const Slot& slot) {
    off_t place = static_cast<off_t>(sizeof slot) * index;
    return pwrite(table.Number(), &slot, sizeof slot, place) == sizeof slot;
}

// The index of the name's slot, else of the first free one; SlotCount when all are used.
int FindSlot(const FileDescriptor& table, std::string_view name) {
    int firstFree = SlotCount;
    for (int index = 0; index < SlotCount; ++index) {
        std::optional<Slot> slot = ReadSlot(table, index);
        if (!slot) return std::min(firstFree, index);
        if (!slot->IsUsed())
            firstFree = std::min(firstFree, index);
        else if (EqualNames(slot->Name, name))
            return index;
    }
    return firstFree;
}

// The number of the name, which then counts one more; 0 on failure.
int AddName(const char* tableName, const char* text) {
    std::string_view name = text ? text : "";
    if (name.empty() || name.size() > MostNameBytes) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    FolderLock lock;
    FileDescriptor table = OpenTable(lock, tableName);
    if (!table) return 0;
    int index = FindSlot(table, name);
    Slot slot = ReadSlot(table, index).value_or(Slot{});
    if (!slot.IsUsed()) {
        slot = Slot{};
        name.copy(slot.Name, MostNameBytes);
    }
    if (slot.Count < std::numeric_limits<std::uint32_t>::max()) ++slot.Count;
    if (index == SlotCount || !WriteSlot(table, index, slot)) {
        SetLastError(ErrorNotEnoughMemory);
        return 0;
    }
    return FirstNumber + index;
}

// The slot of an atom that exists; else nothing, with the last error set.
std::optional<Slot> AtomSlot(const FileDescriptor& table, std::uint16_t atom) {
    if (atom >= FirstNumber) {
        std::optional<Slot> slot = ReadSlot(table, atom - FirstNumber);
        if (slot && slot->IsUsed()) return slot;
    }
    SetLastError(ErrorInvalidHandle);
    return std::nullopt;
}

}  // namespace

std::uint32_t RegisterWindowMessageA(const char* name) {
    return static_cast<std::uint32_t>(AddName("messages", name));
}

std::uint16_t GlobalAddAtomA(const char* name) {
    return static_cast<std::uint16_t>(AddName("atoms", name));
}

std::uint16_t GlobalDeleteAtom(std::uint16_t atom) {
    FolderLock lock;
    FileDescriptor table = OpenTable(lock, "atoms");
    if (!table) return 0;
    std::optional<Slot> slot = AtomSlot(table, atom);
    if (!slot) return 0;
    --slot->Count;
    WriteSlot(table, atom - FirstNumber, *slot);
    return 0;
}

std::uint32_t GlobalGetAtomNameA(std::uint16_t atom, char* buffer, int size) {
    if (!buffer || size <= 0) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    FolderLock lock;
    FileDescriptor table = OpenTable(lock, "atoms");
    if (!table) return 0;
    std::optional<Slot> slot = AtomSlot(table, atom);
    if (!slot) return 0;
    std::size_t length =
        std::string_view(slot->Name).copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = '\0';
    return static_cast<std::uint32_t>(length);
}

}  // namespace quirkmeter::platform
