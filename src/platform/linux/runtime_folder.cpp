#include "platform/linux/runtime_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/last_error.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

using Path = std::array<char, PATH_MAX>;

// Truncates a path that is too long; opening it then fails.
Path FolderPath() {
    Path path;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    struct stat status;
    if (runtime && *runtime == '/' && stat(runtime, &status) == 0 && S_ISDIR(status.st_mode) &&
        status.st_uid == geteuid()) {
        std::snprintf(path.data(), path.size(), "%s/quirkmeter", runtime);
        return path;
    }
    const char* temporary = std::getenv("TMPDIR");
    std::snprintf(path.data(), path.size(), "%s/quirkmeter-%u",
                  temporary && *temporary == '/' ? temporary : "/tmp", geteuid());
    return path;
}

bool IsOursAlone(int folder) {
    struct stat status;
    return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

bool IsShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOSPC ||
           error == EDQUOT;
}

FileDescriptor OpenFolder(const char* path) {
    return OpenIn(AT_FDCWD, path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
}

FileDescriptor Fail(std::uint32_t error) {
    SetLastError(error);
    return FileDescriptor();
}

FileDescriptor OpenFile(int folder, const char* name, int flags) {
    return OpenIn(folder, name, flags | O_RDWR | O_NOFOLLOW | O_NONBLOCK);
}

// --- Locks ---

constexpr std::chrono::seconds LockPatience{2};
constexpr std::uint32_t LockPause = 1;  // milliseconds

bool Lock(int file, short type) {
    struct flock lock {};
    lock.l_type = type;
    return fcntl(file, F_OFD_SETLK, &lock) == 0;
}

// Tests for a lock without taking it, so that the test delays nobody. The descriptor must not be one
// that holds the file.
bool IsHeld(int file) {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    return fcntl(file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// --- Removing ---

// Remove the socket first: if the process ends in between, the file still leads to the rest.
void Remove(int folder, const std::string& name) {
    unlinkat(folder, (name + SocketSuffix).c_str(), 0);
    unlinkat(folder, name.c_str(), 0);
}

auto OpenEntries(int folder) {
    return std::unique_ptr<DIR, int (*)(DIR*)>(fdopendir(folder), closedir);
}

void RemoveDeadFiles(const FolderLock& lock, std::string_view prefix) {
    // Use a separate descriptor, because reading moves the position in the folder.
    auto entries = OpenEntries(OpenIn(lock.Folder(), ".", O_RDONLY | O_DIRECTORY).Release());
    if (!entries) return;
    while (const dirent* entry = readdir(entries.get())) {
        if (!std::string_view(entry->d_name).starts_with(prefix)) continue;
        FileDescriptor file = OpenFile(lock.Folder(), entry->d_name, 0);
        if (file && !IsHeld(file.Number())) Remove(lock.Folder(), entry->d_name);
    }
}

}  // namespace

FileDescriptor OpenIn(int folder, const char* name, int flags) {
    return FileDescriptor(openat(folder, name, flags | O_CLOEXEC, 0600));
}

FileDescriptor OpenRuntimeFolder() {
    Path path = FolderPath();
    FileDescriptor folder = OpenFolder(path.data());
    if (!folder && errno == ENOENT) {
        if (mkdir(path.data(), 0700) != 0 && errno != EEXIST)
            return Fail(IsShortage(errno) ? ErrorNotEnoughMemory : ErrorPathNotFound);
        folder = OpenFolder(path.data());
    }
    if (!folder) return Fail(IsShortage(errno) ? ErrorNotEnoughMemory : ErrorAccessDenied);
    if (!IsOursAlone(folder.Number())) return Fail(ErrorAccessDenied);
    return folder;
}

FolderLock::FolderLock(bool heedTermination) : folder_(OpenRuntimeFolder()) {
    auto end = std::chrono::steady_clock::now() + LockPatience;
    while (folder_ && flock(folder_.Number(), LOCK_EX | LOCK_NB) != 0) {
        if (std::chrono::steady_clock::now() < end &&
            !(heedTermination && TerminationRequested())) {
            Sleep(LockPause);
        } else {
            SetLastError(ErrorLockViolation);
            folder_.Close();
        }
    }
}

HeldFile::HeldFile(FileDescriptor file, std::string name)
    : name_(std::move(name)), file_(std::move(file)) {
    if (file_ && !Lock(file_.Number(), F_RDLCK)) file_.Close();
}

HeldFile HeldFile::Create(const FolderLock& lock, std::string name) {
    RemoveDeadFiles(lock, std::string_view(name).substr(0, name.find('-') + 1));
    FileDescriptor file = OpenFile(lock.Folder(), name.c_str(), O_CREAT | O_EXCL);
    return HeldFile(std::move(file), std::move(name));
}

HeldFile HeldFile::Share(const FolderLock& lock, std::string name) {
    FileDescriptor file = OpenFile(lock.Folder(), name.c_str(), 0);
    if (file && !IsHeld(file.Number())) file.Close();
    return HeldFile(std::move(file), std::move(name));
}

HeldFile& HeldFile::operator=(HeldFile&& other) noexcept {
    Release();
    name_ = std::move(other.name_);
    file_ = std::move(other.file_);
    return *this;
}

void HeldFile::Release() {
    if (!file_) return;
    FolderLock lock;
    struct stat status;
    // Without a link the folder was removed meanwhile; its name may be another folder's.
    bool linked = fstat(file_.Number(), &status) == 0 && status.st_nlink > 0;
    bool last = Lock(file_.Number(), F_WRLCK);
    if (lock && linked && last) Remove(lock.Folder(), name_);
    file_.Close();
}

LiveFiles::LiveFiles(std::string_view prefix)
    : prefix_(prefix), entries_(OpenEntries(OpenRuntimeFolder().Release())) {}

bool LiveFiles::Next() {
    if (!entries_) return false;  // with the last error of OpenRuntimeFolder
    while (const dirent* entry = readdir(entries_.get())) {
        std::string_view name = entry->d_name;
        if (!name.starts_with(prefix_)) continue;
        file_ = OpenFile(dirfd(entries_.get()), entry->d_name, 0);
        if (!file_ && IsShortage(errno)) {
            SetLastError(ErrorNotEnoughMemory);
            return false;
        }
        if (!file_ || !IsHeld(file_.Number())) continue;  // a socket, for one, cannot be opened
        name.remove_prefix(prefix_.size());
        auto [end, error] = std::from_chars(name.begin(), name.end(), number_);
        if (error != std::errc() || end != name.end()) number_ = 0;
        return true;
    }
    SetLastError(ErrorSuccess);
    return false;
}

std::string LastErrorText() {
    std::string folder = FolderPath().data();
    switch (GetLastError()) {
        case ErrorAccessDenied:
            return folder +
                   " must be a folder that belongs to you and that nobody else can enter (mode "
                   "700). Remove what is there and start again.";
        case ErrorPathNotFound:
            return "The folder " + folder +
                   " cannot be made. See that the folder above it is there and that you may write "
                   "to it, then start again.";
        case ErrorNotEnoughMemory:
            return "There is no room left for " + folder + ". Make room and start again.";
        case ErrorLockViolation:
            return "Another program keeps the folder " + folder +
                   " locked. End programs that do not answer, then start again.";
        default:
            return "Error " + std::to_string(GetLastError()) + " in " + folder + ".";
    }
}

}  // namespace quirkmeter::platform
