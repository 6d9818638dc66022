#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/linux/file_descriptor.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

namespace fs = std::filesystem;

constexpr int MostLinks = 40;  // as many as the system follows

// What a link leads to, whether that is there or not.
fs::path BehindLinks(fs::path path) {
    std::error_code error;
    for (int links = 0; links < MostLinks && fs::is_symlink(path, error); ++links)
        path = path.parent_path() / fs::read_symlink(path, error);
    return path;
}

// Root may write anything, but a write-protected file means it.
bool MayBeWritten(const fs::path& path, const struct stat& status) {
    return S_ISREG(status.st_mode) && (status.st_mode & S_IWUSR) && access(path.c_str(), W_OK) == 0;
}

// A new file beside `path`; its name, which does not grow with that of `path`, goes to `temporary`.
FileDescriptor CreateBeside(const fs::path& path, fs::path& temporary) {
    FileDescriptor file;
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = path.parent_path() / (".quirkmeter-" + std::to_string(getpid()) + "-" +
                                          std::to_string(attempt) + ".tmp");
        file =
            FileDescriptor(open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (file || errno != EEXIST) break;
    }
    return file;
}

bool WriteAll(int file, std::string_view content) {
    while (!content.empty()) {
        ssize_t written = TEMP_FAILURE_RETRY(write(file, content.data(), content.size()));
        if (written <= 0) return false;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Takes the room first: with none left, the old content stands.
bool WriteOver(const fs::path& path, const struct stat& old, std::string_view content) {
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

// By a child, which goes on when this process is killed: else the file might keep both the new
// content and the end of a longer old one.
bool WriteInPlace(const fs::path& path, const struct stat& old, std::string_view content) {
    pid_t writer = fork();
    if (writer == 0) _exit(WriteOver(path, old, content) ? 0 : 1);
    int status = 1;
    return writer > 0 && TEMP_FAILURE_RETRY(waitpid(writer, &status, 0)) == writer && status == 0;
}

}  // namespace

bool ReplaceFile(const std::string& path, std::string_view content) {
    fs::path target = BehindLinks(path);
    struct stat old;
    bool exists = stat(target.c_str(), &old) == 0;
    if (exists ? !MayBeWritten(target, old) : errno != ENOENT) return false;

    fs::path temporary;
    FileDescriptor file = CreateBeside(target, temporary);
    if (!file) return exists && WriteInPlace(target, old, content);
    bool alike = !exists || fchmod(file.Number(), old.st_mode & 07777) == 0;
    bool written = WriteAll(file.Number(), content) && fsync(file.Number()) == 0;
    if (alike && written && std::rename(temporary.c_str(), target.c_str()) == 0) return true;
    unlink(temporary.c_str());
    return exists && written && WriteInPlace(target, old, content);
}

}  // namespace quirkmeter::platform
