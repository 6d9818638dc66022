// A window is a held file with its class and title, and a socket beside it. Each message is one
// connection to that socket: a packet with the message, then one with the reply.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/last_error.h"
#include "platform/linux/names.h"
#include "platform/linux/runtime_folder.h"
#include "platform/linux/task_bar.h"
#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr char WindowPrefix[] = "window-";
constexpr std::size_t MaxTextBytes = 1024;    // class and title, each with its zero
constexpr std::size_t MaxSilentSenders = 64;  // connected without having sent anything

struct Request {
    std::uint64_t Message;
    std::uint64_t WParam;
    std::int64_t LParam;
};

struct OwnedWindow {
    WindowHandle Handle = 0;
    HeldFile File;
    FileDescriptor Listener;
    MessageHandler Handler;
    std::string Title;
    std::optional<TaskBarEntry> Entry;
    std::vector<FileDescriptor> Senders;
};

thread_local std::vector<std::shared_ptr<OwnedWindow>> OwnedWindows;

class Deadline {
   public:
    explicit Deadline(std::uint32_t milliseconds)
        : end_(Clock::now() + std::chrono::milliseconds(milliseconds)) {}

    bool Passed() const { return Clock::now() >= end_; }

    // Round up for poll, so that it never wakes just before the deadline.
    int MillisecondsLeft() const {
        auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
        return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT_MAX));
    }

   private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point end_;
};

// Address the socket through the folder's descriptor: its path may be too long for an address.
sockaddr_un SocketAddress(int folder, WindowHandle window) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s%zu%s", folder,
                  WindowPrefix, window, SocketSuffix);
    return address;
}

// --- Finding ---

bool IsWindow(int file, const char* className, const char* title) {
    std::array<char, MaxTextBytes> text;
    ssize_t length = pread(file, text.data(), text.size(), 0);
    if (length <= 0) return false;

    std::string_view texts(text.data(), static_cast<std::size_t>(length));
    std::size_t classEnd = texts.find('\0');
    std::size_t titleEnd = texts.find('\0', classEnd + 1);
    if (classEnd == texts.npos || titleEnd == texts.npos) return false;
    return (!className || EqualNames(texts.substr(0, classEnd), className)) &&
           (!title || EqualNames(texts.substr(classEnd + 1, titleEnd - classEnd - 1), title));
}

// --- Sending ---

FileDescriptor Connect(WindowHandle window, const Deadline& deadline) {
    FileDescriptor folder = OpenRuntimeFolder();
    if (!folder) return FileDescriptor();
    FileDescriptor connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    sockaddr_un address = SocketAddress(folder.Number(), window);
    int result;
    do {
        // Limit the wait for a place in the owner's queue; 0 would mean no limit.
        long left = std::max(deadline.MillisecondsLeft(), 1);
        timeval limit{left / 1000, left % 1000 * 1000};
        setsockopt(connection.Number(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
        result = connect(connection.Number(), reinterpret_cast<const sockaddr*>(&address),
                         sizeof address);
    } while (result != 0 && errno == EINTR && !deadline.Passed());
    if (result == 0) return connection;
    bool timedOut = errno == EAGAIN || errno == EINTR;
    bool gone = errno == ENOENT || errno == ECONNREFUSED;
    // Any other error, such as a lack of descriptors, does not mean that the window is gone.
    std::uint32_t error = gone ? ErrorInvalidWindowHandle : ErrorNotEnoughMemory;
    SetLastError(timedOut ? ErrorSuccess : error);
    return FileDescriptor();
}

// A request to end the program ends the wait.
bool WaitForAnswer(int connection, const Deadline& deadline) {
    pollfd waiting{connection, POLLIN, 0};
    int ready;
    do ready = poll(&waiting, 1, deadline.MillisecondsLeft());
    while (ready < 0 && errno == EINTR && !TerminationRequested());
    return ready > 0;
}

// --- Owning ---

// Returns a number that no window has had since the folder was created; 0 on failure.
WindowHandle NextHandle(const FolderLock& lock) {
    FileDescriptor counter = OpenIn(lock.Folder(), "last-window", O_RDWR | O_CREAT | O_NOFOLLOW);
    WindowHandle last = 0;
    if (pread(counter.Number(), &last, sizeof last, 0) != sizeof last || last >= INT_MAX) last = 0;
    LiveFiles windows(WindowPrefix);
    while (windows.Next()) last = std::max(last, windows.Number());
    ++last;
    return pwrite(counter.Number(), &last, sizeof last, 0) == sizeof last ? last : 0;
}

FileDescriptor Listen(const FolderLock& lock, WindowHandle window) {
    FileDescriptor listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address = SocketAddress(lock.Folder(), window);
    if (bind(listener.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener.Number(), SOMAXCONN) != 0)
        listener.Close();
    return listener;
}

void WaitForSenders(const Deadline& deadline) {
    std::vector<pollfd> waiting;
    for (const auto& window : OwnedWindows) {
        waiting.push_back({window->Listener.Number(), POLLIN, 0});
        for (const FileDescriptor& sender : window->Senders)
            waiting.push_back({sender.Number(), POLLIN, 0});
    }
    poll(waiting.data(), waiting.size(), deadline.MillisecondsLeft());
}

bool IsSameUser(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == geteuid();
}

void AcceptSenders(OwnedWindow& window) {
    for (std::size_t i = 0; i < MaxSilentSenders; ++i) {
        FileDescriptor sender(
            accept4(window.Listener.Number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!sender) return;
        if (IsSameUser(sender.Number())) window.Senders.push_back(std::move(sender));
    }
}

// A sender that timed out will retry. Do not carry out its first request too.
bool HasGivenUp(int sender) {
    pollfd state{sender, 0, 0};
    return poll(&state, 1, 0) > 0;
}

// True after a message. Senders that have not sent yet stay in the window's list; of too many, the
// newest. A sender of anything but a message is dropped.
bool AnswerSenders(OwnedWindow& window) {
    bool answered = false;
    std::vector<FileDescriptor> silent;
    for (FileDescriptor& sender : std::exchange(window.Senders, {})) {
        if (!window.Listener) return answered;  // a handler dropped its window
        Request request;
        ssize_t length = recv(sender.Number(), &request, sizeof request, MSG_TRUNC);
        if (length < 0 && errno == EAGAIN) {
            silent.push_back(std::move(sender));
        } else if (length == sizeof request && !HasGivenUp(sender.Number())) {
            std::int64_t reply = window.Handler(static_cast<std::uint32_t>(request.Message),
                                                request.WParam, request.LParam);
            send(sender.Number(), &reply, sizeof reply, MSG_NOSIGNAL);
            answered = true;
        }
    }
    if (silent.size() > MaxSilentSenders)
        silent.erase(silent.begin(), silent.end() - MaxSilentSenders);
    if (window.Listener) std::ranges::move(silent, std::back_inserter(window.Senders));
    return answered;
}

}  // namespace

WindowHandle FindWindowExA(WindowHandle parent, WindowHandle childAfter, const char* className,
                           const char* title) {
    if (parent || childAfter) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    return FindWindowA(className, title);
}

WindowHandle FindWindowA(const char* className, const char* title) {
    WindowHandle found = 0;  // the newest of several
    LiveFiles windows(WindowPrefix);
    while (windows.Next())
        if (IsWindow(windows.File(), className, title)) found = std::max(found, windows.Number());
    return found;
}

std::intptr_t SendMessageTimeoutA(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                  std::intptr_t lParam, std::uint32_t,
                                  std::uint32_t timeoutMilliseconds, std::uintptr_t* reply) {
    Deadline deadline(timeoutMilliseconds);
    FileDescriptor connection = Connect(window, deadline);
    if (!connection) return 0;

    Request request{message, wParam, lParam};
    send(connection.Number(), &request, sizeof request, MSG_NOSIGNAL);
    if (!WaitForAnswer(connection.Number(), deadline)) {
        SetLastError(ErrorSuccess);
        return 0;
    }
    std::int64_t answer;
    if (recv(connection.Number(), &answer, sizeof answer, 0) != sizeof answer) {
        SetLastError(ErrorInvalidWindowHandle);
        return 0;
    }
    if (reply) *reply = static_cast<std::uintptr_t>(answer);
    return 1;
}

WindowHandle OwnWindow(const char* className, const char* title, MessageHandler handler) {
    std::string texts =
        std::string(className ? className : "") + '\0' + (title ? title : "") + '\0';
    if (!className || texts.size() > MaxTextBytes) {
        SetLastError(ErrorInvalidParameter);
        return 0;
    }
    auto window = std::make_shared<OwnedWindow>();
    FolderLock lock;
    if (!lock) return 0;
    window->Handle = NextHandle(lock);
    window->File = HeldFile::Create(lock, WindowPrefix + std::to_string(window->Handle));
    window->Listener = Listen(lock, window->Handle);
    window->Handler = std::move(handler);
    window->Title = title ? title : "";
    if (!window->Handle || !window->Listener ||
        write(window->File.Number(), texts.data(), texts.size()) !=
            static_cast<ssize_t>(texts.size())) {
        SetLastError(ErrorNotEnoughMemory);
        return 0;
    }
    OwnedWindows.push_back(window);
    return window->Handle;
}

void DropWindow(WindowHandle handle) {
    auto found = std::ranges::find(OwnedWindows, handle, &OwnedWindow::Handle);
    if (found == OwnedWindows.end()) return;
    std::shared_ptr<OwnedWindow> window = *found;
    OwnedWindows.erase(found);
    // Drop the window at once, even from its own handler.
    window->File.Release();
    window->Listener.Close();
    window->Senders.clear();
    window->Entry.reset();
}

void ShowInTaskBar(WindowHandle handle) {
    auto found = std::ranges::find(OwnedWindows, handle, &OwnedWindow::Handle);
    if (found != OwnedWindows.end()) (*found)->Entry.emplace((*found)->Title.c_str());
}

void ServeMessages(std::uint32_t milliseconds) {
    Deadline deadline(milliseconds);
    bool answered = false;
    do {
        WaitForSenders(deadline);
        auto windows = OwnedWindows;  // a handler may make and drop windows
        for (const auto& window : windows) {
            if (window->Entry) window->Entry->Serve();
            AcceptSenders(*window);
            answered |= AnswerSenders(*window);
        }
    } while (!answered && !deadline.Passed());
}

}  // namespace quirkmeter::platform
