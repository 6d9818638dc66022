// Atoms and registered messages. Each is a held file: its file name is the number, its content the
// name.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <unordered_map>

#include "platform/linux/last_error.h"
#include "platform/linux/names.h"
#include "platform/linux/runtime_folder.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr char AtomPrefix[] = "atom-";
constexpr char MessagePrefix[] = "message-";
constexpr std::uint64_t FirstNumber = 0xC000;
constexpr std::uint64_t LastNumber = 0xFFFF;
constexpr std::size_t MaxNameBytes = 255;

// The held files of this process, by number; an atom once for each time that it was added.
std::unordered_multimap<std::uint64_t, HeldFile> Atoms;
std::unordered_map<std::uint64_t, HeldFile> Messages;

// Returns the bytes of the name, which go to `name`; 0 while it is not written yet.
std::size_t ReadName(int file, std::array<char, MaxNameBytes>& name) {
    ssize_t length = pread(file, name.data(), name.size(), 0);
    return static_cast<std::size_t>(std::max<ssize_t>(length, 0));
}

// The number of the live file with that name; 0 when there is none.
std::uint64_t FindNumber(const char* prefix, std::string_view name) {
    std::array<char, MaxNameBytes> found;
    LiveFiles files(prefix);
    while (files.Next())
        if (EqualNames({found.data(), ReadName(files.File(), found)}, name)) return files.Number();
    return 0;
}

// Holds the file of that name, or creates it with the first free number. Returns the number; 0 on
// failure.
std::uint64_t HoldName(const char* prefix, const char* text, HeldFile& file) {
    std::string_view name = text ? text : "";
    if (name.empty() || name.size() > MaxNameBytes) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    FolderLock lock;
    if (!lock) return 0;
    if (std::uint64_t number = FindNumber(prefix, name)) {
        file = HeldFile::Share(lock, prefix + std::to_string(number));
        if (file) return number;
    }
    std::uint64_t number = FirstNumber;
    do file = HeldFile::Create(lock, prefix + std::to_string(number));
    while (!file && errno == EEXIST && ++number <= LastNumber);
    if (file && write(file.Number(), name.data(), name.size()) == std::ssize(name)) return number;
    SetLastError(ErrorNotEnoughMemory);
    return 0;
}

}  // namespace

std::uint32_t RegisterWindowMessageA(const char* name) {
    HeldFile file;
    std::uint64_t number = HoldName(MessagePrefix, name, file);
    if (number != 0) Messages.try_emplace(number, std::move(file));
    return static_cast<std::uint32_t>(number);
}

std::uint16_t GlobalAddAtomA(const char* name) {
    HeldFile file;
    std::uint64_t number = HoldName(AtomPrefix, name, file);
    if (number != 0) Atoms.emplace(number, std::move(file));
    return static_cast<std::uint16_t>(number);
}

std::uint16_t GlobalDeleteAtom(std::uint16_t atom) {
    auto found = Atoms.find(atom);
    if (found == Atoms.end())
        SetLastError(ErrorInvalidHandle);
    else
        Atoms.erase(found);
    return 0;
}

std::uint32_t GlobalGetAtomNameA(std::uint16_t atom, char* buffer, int size) {
    if (!buffer || size <= 0) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    std::array<char, MaxNameBytes> name;
    LiveFiles atoms(AtomPrefix);
    while (atoms.Next()) {
        if (atoms.Number() != atom) continue;
        std::size_t length = std::string_view(name.data(), ReadName(atoms.File(), name))
                                 .copy(buffer, static_cast<std::size_t>(size) - 1);
        buffer[length] = '\0';
        return static_cast<std::uint32_t>(length);
    }
    SetLastError(ErrorInvalidHandle);
    return 0;
}

}  // namespace quirkmeter::platform
