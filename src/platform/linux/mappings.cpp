// A mapping is a held file, held by each process that has a handle to it or a view of it.
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <unordered_map>

#include "platform/linux/last_error.h"
#include "platform/linux/runtime_folder.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr std::string_view MappingPrefix = "mapping-";

struct View {
    std::shared_ptr<HeldFile> Mapping;
    std::size_t Size;
};

std::unordered_map<MappingHandle, std::shared_ptr<HeldFile>> Mappings;
std::unordered_map<const void*, View> Views;

// Encodes any name as a unique file name; empty, with the last error set, if that is too long for
// the file system.
std::string FileOf(const char* name) {
    std::string file(MappingPrefix);
    for (const char* c = name; *c; ++c) {
        bool plain = (*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') ||
                     (*c >= '0' && *c <= '9') || *c == '-' || *c == '_';
        char encoded[4] = {*c, '\0'};
        if (!plain)
            std::snprintf(encoded, sizeof encoded, "%%%02X", static_cast<unsigned char>(*c));
        file += encoded;
    }
    if (file.size() <= 255) return file;
    SetLastError(ErrorNameTooLong);
    return {};
}

MappingHandle KeepHandle(std::shared_ptr<HeldFile> mapping) {
    static MappingHandle last = 0;
    Mappings.emplace(++last, std::move(mapping));
    return last;
}

}  // namespace

MappingHandle CreateFileMappingA(MappingHandle file, void*, std::uint32_t protection,
                                 std::uint32_t sizeHigh, std::uint32_t sizeLow, const char* name) {
    std::uint64_t size = std::uint64_t{sizeHigh} << 32 | sizeLow;
    if (file != InvalidFileHandle || protection != PageReadWrite || size == 0 || !name || !*name) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    std::string fileName = FileOf(name);
    if (fileName.empty()) return 0;
    auto mapping = std::make_shared<HeldFile>();
    FolderLock lock;
    if (!lock) return 0;
    *mapping = HeldFile::Share(lock, fileName);
    bool exists = static_cast<bool>(*mapping);
    if (!exists) *mapping = HeldFile::Create(lock, fileName);
    // Allocate the space now: on a full disk a later write to the view would raise SIGBUS.
    if (!*mapping || (!exists && !Reserve(mapping->Number(), size))) {
        SetLastError(ErrorNotEnoughMemory);
        return 0;
    }
    SetLastError(exists ? ErrorAlreadyExists : ErrorSuccess);
    return KeepHandle(std::move(mapping));
}

MappingHandle OpenFileMappingA(std::uint32_t, bool, const char* name) {
    if (!name || !*name) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    std::string fileName = FileOf(name);
    if (fileName.empty()) return 0;
    auto mapping = std::make_shared<HeldFile>();
    FolderLock lock;
    if (!lock) return 0;
    *mapping = HeldFile::Share(lock, fileName);
    if (!*mapping) {
        SetLastError(ErrorFileNotFound);
        return 0;
    }
    return KeepHandle(std::move(mapping));
}

void* MapViewOfFile(MappingHandle handle, std::uint32_t, std::uint32_t offsetHigh,
                    std::uint32_t offsetLow, std::size_t length) {
    auto found = Mappings.find(handle);
    if (found == Mappings.end() || offsetHigh || offsetLow || length) {
        SetLastError(found == Mappings.end() ? ErrorInvalidHandle : ErrorInvalidParameter);
        return nullptr;
    }
    int file = found->second->Number();
    struct stat status;
    void* view = MAP_FAILED;
    if (fstat(file, &status) == 0) {
        view = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ | PROT_WRITE,
                    MAP_SHARED, file, 0);
    }
    if (view == MAP_FAILED) {
        SetLastError(ErrorNotEnoughMemory);
        return nullptr;
    }
    Views[view] = {found->second, static_cast<std::size_t>(status.st_size)};
    return view;
}

bool UnmapViewOfFile(const void* view) {
    auto found = Views.find(view);
    if (found == Views.end()) {
        SetLastError(ErrorInvalidAddress);
        return false;
    }
    munmap(const_cast<void*>(view), found->second.Size);
    Views.erase(found);
    return true;
}

std::size_t ViewSize(const void* view) {
    auto found = Views.find(view);
    return found == Views.end() ? 0 : found->second.Size;
}

bool CloseHandle(MappingHandle handle) {
    if (Mappings.erase(handle) != 0) return true;
    SetLastError(ErrorInvalidHandle);
    return false;
}

}  // namespace quirkmeter::platform
