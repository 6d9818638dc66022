#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/linux/file_descriptor.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

namespace fs = std::filesystem;

// The file behind a link, so that the link stays one; empty when it leads nowhere.
fs::path BehindLinks(const fs::path& path) {
    std::error_code error;
    return fs::is_symlink(path, error) ? fs::canonical(path, error) : path;
}

// Root may write anything, but a write-protected file means it.
bool MayBeReplaced(const fs::path& path, const struct stat& status) {
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

}  // namespace

bool ReplaceFile(const std::string& path, std::string_view content) {
    fs::path target = BehindLinks(path);
    if (target.empty()) return false;
    struct stat old;
    bool exists = stat(target.c_str(), &old) == 0;
    if (exists && !MayBeReplaced(target, old)) return false;

    fs::path temporary;
    FileDescriptor file = CreateBeside(target, temporary);
    if (!file) return false;
    bool replaced = (!exists || fchmod(file.Number(), old.st_mode & 07777) == 0) &&
                    WriteAll(file.Number(), content) && fsync(file.Number()) == 0 &&
                    std::rename(temporary.c_str(), target.c_str()) == 0;
    if (!replaced) unlink(temporary.c_str());
    return replaced;
}

}  // namespace quirkmeter::platform
