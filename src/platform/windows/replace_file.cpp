#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

class OpenFile {
   public:
    OpenFile(const std::string& path, DWORD sharing)
        : handle_(::CreateFileA(path.c_str(), GENERIC_WRITE, sharing, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    OpenFile(const OpenFile&) = delete;
    ~OpenFile() {
        if (*this) ::CloseHandle(handle_);
    }

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }

    /// True when all of it is on the disk.
    bool Write(std::string_view content) const {
        DWORD written = 0;
        return ::WriteFile(handle_, content.data(), static_cast<DWORD>(content.size()), &written,
                           nullptr) &&
               written == content.size() && ::FlushFileBuffers(handle_);
    }

   private:
    HANDLE handle_;
};

// A folder's own permissions would let a write-protected file be replaced, but it means it.
bool MayBeReplaced(const std::string& path) {
    DWORD attributes = ::GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return true;  // nothing there yet
    if (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) return false;
    OpenFile existing(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    return static_cast<bool>(existing);
}

// Makes an empty file beside `path` and returns its path, empty on failure.
std::string CreateBeside(const std::string& path) {
    std::string folder = path.substr(0, path.size() - FileName(path).size());
    char temporary[MAX_PATH];
    UINT made = ::GetTempFileNameA(folder.empty() ? "." : folder.c_str(), "qm", 0, temporary);
    return made != 0 ? temporary : "";
}

bool WriteNew(const std::string& path, std::string_view content) {
    OpenFile file(path, 0);
    return file && file.Write(content);
}

}  // namespace

bool ReplaceFile(const std::string& path, std::string_view content) {
    if (!MayBeReplaced(path)) return false;
    std::string temporary = CreateBeside(path);
    if (temporary.empty()) return false;
    bool replaced = WriteNew(temporary, content) &&
                    ::MoveFileExA(temporary.c_str(), path.c_str(),
                                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    if (!replaced) ::DeleteFileA(temporary.c_str());
    return replaced;
}

}  // namespace quirkmeter::platform
