// The objects that two processes share: blocks as named mappings, their names as global atoms.
#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

HANDLE Native(MappingHandle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

std::uint16_t GlobalAddAtomA(const char* name) {
    return ::GlobalAddAtomA(name);
}

std::uint16_t GlobalDeleteAtom(std::uint16_t atom) {
    return ::GlobalDeleteAtom(atom);
}

std::uint32_t GlobalGetAtomNameA(std::uint16_t atom, char* buffer, int size) {
    return ::GlobalGetAtomNameA(atom, buffer, size);
}

MappingHandle CreateFileMappingA(MappingHandle file, void* security, std::uint32_t protection,
                                 std::uint32_t sizeHigh, std::uint32_t sizeLow, const char* name) {
    static_assert(InvalidFileHandle == static_cast<MappingHandle>(-1));  // INVALID_HANDLE_VALUE
    ::SetLastError(ERROR_SUCCESS);  // so that an older error does not count as this call's
    return reinterpret_cast<MappingHandle>(
        ::CreateFileMappingA(Native(file), static_cast<SECURITY_ATTRIBUTES*>(security), protection,
                             sizeHigh, sizeLow, name));
}

MappingHandle OpenFileMappingA(std::uint32_t access, bool inherit, const char* name) {
    return reinterpret_cast<MappingHandle>(::OpenFileMappingA(access, inherit, name));
}

void* MapViewOfFile(MappingHandle mapping, std::uint32_t access, std::uint32_t offsetHigh,
                    std::uint32_t offsetLow, std::size_t length) {
    return ::MapViewOfFile(Native(mapping), access, offsetHigh, offsetLow, length);
}

bool UnmapViewOfFile(const void* view) {
    return ::UnmapViewOfFile(view);
}

std::size_t ViewSize(const void* view) {
    MEMORY_BASIC_INFORMATION region{};
    ::VirtualQuery(view, &region, sizeof region);
    bool isView = region.Type == MEM_MAPPED && region.State == MEM_COMMIT &&
                  region.AllocationBase == view && region.BaseAddress == view;
    return isView ? region.RegionSize : 0;
}

bool CloseHandle(MappingHandle handle) {
    return ::CloseHandle(Native(handle));
}

std::uint32_t GetLastError() {
    return ::GetLastError();
}

}  // namespace quirkmeter::platform
