#include <windows.h>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

class OpenFile {
   public:
    OpenFile(const std::string& path, DWORD sharing, DWORD creation)
        : handle_(::CreateFileA(path.c_str(), GENERIC_WRITE, sharing, nullptr, creation,
                                FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    OpenFile(const OpenFile&) = delete;
    ~OpenFile() {
        if (*this) ::CloseHandle(handle_);
    }

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }

    // Allocates the space first: on a full disk the old content stays. True when all of the content
    // is on the disk.
    bool Write(std::string_view content) const {
        DWORD written = 0;
        auto size = static_cast<DWORD>(content.size());
        return SetSize(size) && ::SetFilePointer(handle_, 0, nullptr, FILE_BEGIN) == 0 &&
               ::WriteFile(handle_, content.data(), size, &written, nullptr) && written == size &&
               ::FlushFileBuffers(handle_);
    }

    bool HasOtherNames() const {
        BY_HANDLE_FILE_INFORMATION information;
        return ::GetFileInformationByHandle(handle_, &information) &&
               information.nNumberOfLinks > 1;
    }

   private:
    bool SetSize(DWORD size) const {
        return ::SetFilePointer(handle_, static_cast<LONG>(size), nullptr, FILE_BEGIN) == size &&
               ::SetEndOfFile(handle_);
    }

    HANDLE handle_;
};

constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

enum class Way { None, InPlace, ByNewFile };

Way WayToReplace(const std::string& path, DWORD attributes) {
    if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) return Way::InPlace;
    // The folder's permissions may allow the replacement of a write-protected file; refuse it.
    if (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) return Way::None;
    OpenFile existing(path, ShareAll, OPEN_EXISTING);
    if (!existing) return Way::None;
    return existing.HasOtherNames() ? Way::InPlace : Way::ByNewFile;
}

// Makes an empty file beside `path` and returns its path, empty on failure.
std::string CreateBeside(const std::string& path) {
    std::string folder = path.substr(0, path.size() - FileName(path).size());
    char temporary[MAX_PATH];
    UINT made = ::GetTempFileNameA(folder.empty() ? "." : folder.c_str(), "qm", 0, temporary);
    return made != 0 ? temporary : "";
}

// The target of a link need not exist yet.
bool WriteInPlace(const std::string& path, std::string_view content) {
    OpenFile file(path, ShareAll, OPEN_ALWAYS);
    return file && file.Write(content);
}

bool WriteNew(const std::string& path, std::string_view content) {
    OpenFile file(path, 0, OPEN_EXISTING);
    return file && file.Write(content);
}

}  // namespace

bool ReplaceFile(const std::string& path, std::string_view content) {
    DWORD attributes = ::GetFileAttributesA(path.c_str());
    bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    Way way = exists ? WayToReplace(path, attributes) : Way::ByNewFile;
    if (way == Way::None) return false;
    if (way == Way::InPlace) return WriteInPlace(path, content);
    std::string temporary = CreateBeside(path);
    if (temporary.empty()) return exists && WriteInPlace(path, content);
    bool written = WriteNew(temporary, content);
    if (written && ::MoveFileExA(temporary.c_str(), path.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    ::DeleteFileA(temporary.c_str());
    return exists && written && WriteInPlace(path, content);
}

bool CanReplaceFile(const std::string& path) {
    DWORD attributes = ::GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) return WayToReplace(path, attributes) != Way::None;
    std::string temporary = CreateBeside(path);
    return !temporary.empty() && ::DeleteFileA(temporary.c_str());
}

}  // namespace quirkmeter::platform
