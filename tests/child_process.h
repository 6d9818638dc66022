// Support for tests of whole processes: child processes, waits with a deadline, and files.
#pragma once

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quirkmeter {

using Clock = std::chrono::steady_clock;

/// The longest wait of a test, long enough for a busy machine.
inline constexpr std::chrono::seconds Patience{60};

/// Waits until the condition holds; false after the longest wait.
template <typename Condition>
bool Becomes(Condition condition) {
    auto end = Clock::now() + Patience;
    while (!condition()) {
        if (Clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// Waits for the end of a child. Returns its exit code, or minus the number of the signal that
/// ended it; nothing when it still runs after the longest wait.
inline std::optional<int> ExitCode(pid_t child) {
    int status = 0;
    if (!Becomes([&] { return waitpid(child, &status, WNOHANG) != 0; })) return std::nullopt;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

inline std::string Content(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void Write(const std::filesystem::path& path, std::string_view content) {
    std::ofstream(path, std::ios::binary) << content;
}

/// A new folder for a test.
inline std::filesystem::path MakeFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quirkmeter-XXXXXX").string();
    return mkdtemp(pattern.data());
}

/// The files in the folder in which processes meet that exist only while a process runs.
inline std::vector<std::string> PassingFiles(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "quirkmeter")) {
        std::string name = entry.path().filename();
        for (const char* prefix : {"window-", "mapping-", "instance-", "atom-"})
            if (name.starts_with(prefix)) names.push_back(name);
    }
    return names;
}

/// A child process, which ends with this object at the latest.
class Process {
   public:
    // cppcheck-suppress passedByValue ; the arguments of a program are not const
    explicit Process(std::vector<std::string> command)
        : Process([arguments = Pointers(command)] {
              execvp(arguments[0], arguments.data());
              _exit(127);
          }) {}
    /// A copy of this process that runs `act` and then waits to be killed.
    explicit Process(const std::function<void()>& act) {
        int ends[2] = {-1, -1};
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        std::fflush(stdout);  // or the child would print it again
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(ends[1], STDIN_FILENO);
            dup2(ends[1], STDOUT_FILENO);
            act();
            for (;;) pause();
        }
        close(ends[1]);
        socket_ = ends[0];
        timeval patience{Patience.count(), 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    Process(Process&&) = delete;
    ~Process() {
        Kill();
        close(socket_);
    }

    pid_t Pid() const { return pid_; }

    /// The next line of its output. At the end of the output, or after the longest wait, the part
    /// of a line that has come.
    std::string Line() const {
        std::string line;
        for (char next; recv(socket_, &next, 1, 0) == 1 && next != '\n';) line += next;
        return line;
    }
    int Number() const { return std::stoi(Line()); }

    /// Writes a line to its standard input.
    void Tell(const std::string& line) const {
        std::string text = line + '\n';
        send(socket_, text.data(), text.size(), MSG_NOSIGNAL);
    }

    void Signal(int signal) const { kill(pid_, signal); }

    /// Waits for its end, as ExitCode does.
    std::optional<int> ExitCode() {
        std::optional<int> code = quirkmeter::ExitCode(pid_);
        if (code) pid_ = -1;
        return code;
    }

    void Kill() {
        if (pid_ <= 0) return;
        Signal(SIGKILL);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

   private:
    static std::vector<char*> Pointers(std::vector<std::string>& command) {
        std::vector<char*> arguments;
        for (std::string& part : command) arguments.push_back(part.data());
        arguments.push_back(nullptr);
        return arguments;
    }

    pid_t pid_ = -1;
    int socket_ = -1;
};

}  // namespace quirkmeter
