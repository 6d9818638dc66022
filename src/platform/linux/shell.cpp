#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "platform/linux/file_descriptor.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr std::intptr_t FileMissing = 2;
constexpr std::intptr_t NothingToOpenItWith = 31;
constexpr std::intptr_t Started = 33;

// Makes only calls that are safe between fork and exec in a process with threads.
[[noreturn]] void BecomeProgram(char* const* arguments, const char* folder, int failurePipe) {
    // Some libraries open descriptors without O_CLOEXEC.
    close_range(3, ~0u, CLOSE_RANGE_CLOEXEC);
    if (chdir(folder) == 0) execvp(arguments[0], arguments);
    char failed = 1;
    [[maybe_unused]] ssize_t written = write(failurePipe, &failed, 1);
    _exit(127);
}

// Starts a detached program in a session of its own.
bool StartDetached(const std::vector<std::string>& command, const std::string& folder) {
    std::vector<char*> arguments;
    for (const std::string& part : command) arguments.push_back(const_cast<char*>(part.c_str()));
    arguments.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) {
        setsid();
        // Start it as a grandchild: init reaps it, so it leaves no zombie.
        pid_t grandchild = fork();
        if (grandchild == 0) BecomeProgram(arguments.data(), folder.c_str(), ends[1]);
        _exit(grandchild > 0 ? 0 : 1);
    }
    writeEnd.Close();
    int status = 0;
    TEMP_FAILURE_RETRY(waitpid(child, &status, 0));
    char failed;
    ssize_t length = TEMP_FAILURE_RETRY(read(readEnd.Number(), &failed, 1));
    // Nothing to read: a successful exec closed the other end.
    return length == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool BeginsLikeProgram(const std::string& path) {
    std::string start(4, '\0');
    std::ifstream(path, std::ios::binary).read(start.data(), 4);
    return start.starts_with("#!") || start == "\177ELF";
}

// On a file system without permissions a document is executable, too, and the system would run it as
// a shell script.
bool IsProgram(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0 && BeginsLikeProgram(path);
}

}  // namespace

std::intptr_t ShellExecuteA(WindowHandle, const char*, const char* file, const char* parameters,
                            const char* directory, int) {
    std::error_code error;
    std::filesystem::path path = std::filesystem::absolute(file ? file : "", error);
    if (error || !std::filesystem::exists(path, error)) return FileMissing;

    std::vector<std::string> command;
    if (IsProgram(path)) {
        command.push_back(path);
        std::istringstream words(parameters ? parameters : "");
        for (std::string word; words >> word;) command.push_back(word);
    } else {
        command = {"xdg-open", path};
    }
    bool useDirectory = directory && std::filesystem::is_directory(directory, error);
    std::string folder = useDirectory ? directory : path.parent_path().string();
    return StartDetached(command, folder) ? Started : NothingToOpenItWith;
}

}  // namespace quirkmeter::platform
