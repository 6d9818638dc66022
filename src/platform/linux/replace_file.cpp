#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "platform/linux/file_descriptor.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

namespace fs = std::filesystem;

constexpr int MaxLinks = 40;  // as many as the system follows

// The target of a link, which need not exist.
fs::path BehindLinks(fs::path path) {
    std::error_code error;
    for (int links = 0; links < MaxLinks && fs::is_symlink(path, error); ++links)
        path = path.parent_path() / fs::read_symlink(path, error);
    return path;
}

// Root may write any file; respect write protection nevertheless.
bool MayBeWritten(const fs::path& path, const struct stat& status) {
    return S_ISREG(status.st_mode) && (status.st_mode & S_IWUSR) && access(path.c_str(), W_OK) == 0;
}

// The process that made a temporary file, and the file's number.
constexpr char TemporaryName[] = ".quirkmeter-%d-%d.tmp";

std::string NameOf(pid_t process, int number) {
    char name[64];
    std::snprintf(name, sizeof name, TemporaryName, process, number);
    return name;
}

bool IsRunning(pid_t process) {
    return kill(process, 0) == 0 || errno != ESRCH;
}

// Removes the temporary files of processes that were killed while they wrote one.
void RemoveLeftovers(const fs::path& folder) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        std::string name = entry.path().filename();
        int process = 0, number = 0;
        if (std::sscanf(name.c_str(), TemporaryName, &process, &number) == 2 && process > 0 &&
            name == NameOf(process, number) && !IsRunning(process))
            unlink(entry.path().c_str());
    }
}

// A new file in that folder; its path goes to `temporary`.
FileDescriptor CreateIn(const fs::path& folder, fs::path& temporary) {
    FileDescriptor file;
    for (int number = 0; number < 100; ++number) {
        temporary = folder / NameOf(getpid(), number);
        file =
            FileDescriptor(open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (file || errno != EEXIST) break;
    }
    return file;
}

// Fails for another user's file, because the user would lose it.
bool TakeAfter(int file, const struct stat& old) {
    return fchown(file, old.st_uid, old.st_gid) == 0 && fchmod(file, old.st_mode & 07777) == 0;
}

bool WriteAll(int file, std::string_view content) {
    while (!content.empty()) {
        ssize_t written = TEMP_FAILURE_RETRY(write(file, content.data(), content.size()));
        if (written <= 0) return false;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Allocates the space first: on a full disk the old content stays.
bool WriteInPlace(const fs::path& path, const struct stat& old, std::string_view content) {
    FileDescriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (!file) return false;
    if (!Reserve(file.Number(), content.size())) {
        [[maybe_unused]] int result = ftruncate(file.Number(), old.st_size);
        return false;
    }
    return WriteAll(file.Number(), content) &&
           ftruncate(file.Number(), static_cast<off_t>(content.size())) == 0 &&
           fsync(file.Number()) == 0;
}

}  // namespace

bool ReplaceFile(const std::string& path, std::string_view content) {
    fs::path target = BehindLinks(path);
    struct stat old;
    bool exists = stat(target.c_str(), &old) == 0;
    if (exists ? !MayBeWritten(target, old) : errno != ENOENT) return false;
    // A new file would replace only one of several hard links.
    if (exists && old.st_nlink > 1) return WriteInPlace(target, old, content);

    fs::path folder = target.has_parent_path() ? target.parent_path() : ".";
    RemoveLeftovers(folder);
    fs::path temporary;
    FileDescriptor file = CreateIn(folder, temporary);
    if (!file) return exists && WriteInPlace(target, old, content);
    bool alike = !exists || TakeAfter(file.Number(), old);
    bool written = WriteAll(file.Number(), content) && fsync(file.Number()) == 0;
    if (alike && written && std::rename(temporary.c_str(), target.c_str()) == 0) return true;
    unlink(temporary.c_str());
    return exists && written && WriteInPlace(target, old, content);
}

bool CanReplaceFile(const std::string& path) {
    fs::path target = BehindLinks(path);
    struct stat old;
    if (stat(target.c_str(), &old) == 0) return MayBeWritten(target, old);
    fs::path folder = target.parent_path();
    return errno == ENOENT && access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0;
}

}  // namespace quirkmeter::platform
