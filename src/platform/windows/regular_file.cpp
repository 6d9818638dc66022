#include <io.h>
#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

RegularFile OpenRegularFile(const std::string& path) {
    RegularFile file(std::fopen(path.c_str(), "rb"));
    if (!file) return nullptr;
    // CON, NUL and named pipes have names like files.
    auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(file.get())));
    return ::GetFileType(handle) == FILE_TYPE_DISK ? std::move(file) : nullptr;
}

}  // namespace quirkmeter::platform
