#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

namespace fs = std::filesystem;

bool SameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The links below /proc lead to open streams.
bool PassesProc(fs::path path) {
    constexpr int MaxLinks = 40;  // as many as the system follows
    std::error_code error;
    for (int links = 0; links < MaxLinks && fs::is_symlink(path, error); ++links) {
        fs::path folder = fs::canonical(fs::absolute(path).parent_path(), error);
        if (folder.native().starts_with("/proc/")) return true;
        path = folder / fs::read_symlink(path, error);
    }
    return false;
}

}  // namespace

bool OnTerminal(int stream) {
    return isatty(stream) == 1;
}

void CloseOwnConsole() {}

bool OutputRedirected() {
    struct stat output;
    if (fstat(STDOUT_FILENO, &output) != 0) return false;
    if (S_ISFIFO(output.st_mode)) return true;
    struct stat errors;
    bool isLog = fstat(STDERR_FILENO, &errors) == 0 && SameFile(output, errors) &&
                 (fcntl(STDOUT_FILENO, F_GETFL) & O_APPEND) != 0;
    return S_ISREG(output.st_mode) && !isLog;
}

bool IsStream(const std::string& path) {
    struct stat status;
    bool exists = stat(path.c_str(), &status) == 0;
    return exists && ((!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) || PassesProc(path));
}

}  // namespace quirkmeter::platform
