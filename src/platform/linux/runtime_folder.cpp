#include "platform/linux/runtime_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/linux/last_error.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

std::string FolderPath() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    struct stat status;
    if (runtime && *runtime == '/' && stat(runtime, &status) == 0 && S_ISDIR(status.st_mode) &&
        status.st_uid == geteuid())
        return std::string(runtime) + "/quirkmeter";
    const char* temporary = std::getenv("TMPDIR");
    std::string base = temporary && *temporary == '/' ? temporary : "/tmp";
    return base + "/quirkmeter-" + std::to_string(geteuid());
}

bool IsOursAlone(int folder) {
    struct stat status;
    return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

void ComplainOnce(const std::string& path) {
    static std::atomic_flag complained;
    if (complained.test_and_set()) return;
    std::fprintf(stderr,
                 "%s must be a folder that belongs to you and that nobody else can enter (mode "
                 "700): remove what is there and start again.\n",
                 path.c_str());
}

bool Lock(int file, int operation) {
    return TEMP_FAILURE_RETRY(flock(file, operation)) == 0;
}

// The socket first: should the process end between the two, the file still leads to the rest.
void Remove(int folder, const std::string& name) {
    unlinkat(folder, SocketName(name).c_str(), 0);
    unlinkat(folder, name.c_str(), 0);
}

FileDescriptor OpenFile(int folder, const std::string& name, int flags) {
    return OpenPatiently(folder, name.c_str(), flags | O_RDWR | O_NOFOLLOW | O_NONBLOCK);
}

constexpr int MostAttempts = 10;
constexpr std::uint32_t AttemptPause = 5;  // milliseconds

constexpr std::chrono::seconds LockPatience{2};
constexpr std::uint32_t LockPause = 1;  // milliseconds

bool IsPassing(int error) {
    return error == EINTR || error == EMFILE || error == ENFILE || error == ENOMEM;
}

}  // namespace

FileDescriptor OpenPatiently(int folder, const char* name, int flags) {
    for (int attempt = 1;; ++attempt) {
        FileDescriptor file(openat(folder, name, flags | O_CLOEXEC, 0600));
        if (file || !IsPassing(errno) || attempt == MostAttempts) return file;
        Sleep(AttemptPause);
    }
}

FileDescriptor OpenRuntimeFolder() {
    std::string path = FolderPath();
    mkdir(path.c_str(), 0700);
    FileDescriptor folder =
        OpenPatiently(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (folder && IsOursAlone(folder.Number())) return folder;
    if (!folder && IsPassing(errno)) {
        SetLastError(ErrorNotEnoughMemory);
        return FileDescriptor();
    }
    ComplainOnce(path);
    SetLastError(ErrorAccessDenied);
    return FileDescriptor();
}

FolderLock::FolderLock(bool forEver) : folder_(OpenRuntimeFolder()) {
    auto end = std::chrono::steady_clock::now() + LockPatience;
    while (folder_ && !Lock(folder_.Number(), LOCK_EX | LOCK_NB)) {
        if (errno == EWOULDBLOCK && (forEver || std::chrono::steady_clock::now() < end)) {
            Sleep(LockPause);
        } else {
            SetLastError(ErrorAccessDenied);
            folder_.Close();
        }
    }
}

HeldFile::HeldFile(const FolderLock& lock, std::string name, int flags)
    : name_(std::move(name)), file_(OpenFile(lock.Folder(), name_, flags)) {
    if (file_ && !Lock(file_.Number(), LOCK_SH | LOCK_NB)) file_.Close();
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
    // Without a link, the folder was removed under us, and the name may be another's by now.
    bool linked = fstat(file_.Number(), &status) == 0 && status.st_nlink > 0;
    bool last = Lock(file_.Number(), LOCK_EX | LOCK_NB);
    if (lock && linked && last) Remove(lock.Folder(), name_);
    file_.Close();
}

std::vector<std::string> LiveFiles(const FolderLock& lock, std::string_view prefix) {
    std::vector<std::string> live;
    // A descriptor of its own, because reading moves the position in the folder.
    FileDescriptor folder = OpenPatiently(lock.Folder(), ".", O_RDONLY | O_DIRECTORY);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(folder.Release()), closedir);
    if (!entries) return live;
    while (const dirent* entry = readdir(entries.get())) {
        std::string name = entry->d_name;
        if (!name.starts_with(prefix)) continue;
        FileDescriptor file = OpenFile(lock.Folder(), name, 0);
        if (!file) continue;  // a socket, for one, cannot be opened
        if (Lock(file.Number(), LOCK_EX | LOCK_NB))
            Remove(lock.Folder(), name);
        else
            live.push_back(name);
    }
    return live;
}

}  // namespace quirkmeter::platform
