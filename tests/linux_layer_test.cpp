#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>
#include <vector>

#include "platform/platform.h"
#include "process.h"

// Last, because Xlib makes macros of names that the test library uses.
// clang-format off
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
// clang-format on

namespace quirkmeter::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

template <typename... Texts>
std::vector<std::string> Peer(Texts... arguments) {
    return {ProgramFile("\\linux_layer_peer"), arguments...};
}

int OpenDescriptors() {
    return static_cast<int>(std::ranges::distance(fs::directory_iterator("/proc/self/fd")));
}

class LinuxLayer : public testing::Test {
   protected:
    LinuxLayer() {
        std::string pattern = (fs::temp_directory_path() / "layer-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
        // Longer than the address of a socket can be.
        runtime_ = root_ / std::string(120, 'r');
        fs::create_directory(runtime_);
        setenv("XDG_RUNTIME_DIR", runtime_.c_str(), 1);
    }
    ~LinuxLayer() override { fs::remove_all(root_); }

    fs::path Folder() const { return runtime_ / "quirkmeter"; }

    // What lies in the folder for a while only.
    std::vector<std::string> PassingFiles() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(Folder())) {
            const std::string name = entry.path().filename();
            if (name.starts_with("window-") || name.starts_with("mapping-")) names.push_back(name);
        }
        return names;
    }

    fs::path root_;
    fs::path runtime_;
};

std::intptr_t Send(WindowHandle window, std::intptr_t lParam, std::uint32_t milliseconds,
                   std::uintptr_t* reply = nullptr) {
    return SendMessageTimeoutA(window, 0xC001, 0xFFFFFFFF0000C002, lParam, SendBlock, milliseconds,
                               reply);
}

TEST_F(LinuxLayer, AMessageReachesAnotherProcessAndItsAnswerComesBack) {
    EXPECT_EQ(FindWindowA("UIPCMAIN", nullptr), 0u);
    Process owner(Peer("own", "UIPCMAIN", "The Title"));
    const WindowHandle window = static_cast<WindowHandle>(owner.Number());
    ASSERT_NE(window, 0u);

    EXPECT_EQ(FindWindowExA(0, 0, "UIPCMAIN", nullptr), window);
    EXPECT_EQ(FindWindowA("uipcmain", "THE title"), window);
    EXPECT_EQ(FindWindowA("UIPCMAIN", "The"), 0u);
    EXPECT_EQ(FindWindowA("UIPCMAI", nullptr), 0u);

    std::uintptr_t reply = 0;
    EXPECT_NE(Send(window, 5, 2000, &reply), 0);
    EXPECT_EQ(reply, 0xFFFFFFFF0000C002 + 0xC001 + 5);
}

TEST_F(LinuxLayer, ATimeOutLeavesNoLastErrorAndAVanishedWindowLeavesOne) {
    Process owner(Peer("own", "Window", ""));
    const WindowHandle window = static_cast<WindowHandle>(owner.Number());

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Send(window, -1, 30), 0);
    EXPECT_EQ(GetLastError(), ErrorSuccess);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_EQ(Send(window, 0, 0), 0) << "no time at all";
    EXPECT_EQ(GetLastError(), ErrorSuccess);

    owner.Kill();
    EXPECT_EQ(Send(window, 0, 1000), 0);
    EXPECT_EQ(GetLastError(), ErrorInvalidWindowHandle);
    EXPECT_EQ(FindWindowA("Window", nullptr), 0u);
    EXPECT_THAT(PassingFiles(), IsEmpty());

    Process successor(Peer("own", "Window", ""));
    const WindowHandle next = static_cast<WindowHandle>(successor.Number());
    EXPECT_GT(next, window) << "an old handle must not lead to a new window";
    EXPECT_EQ(Send(next, -2, 10000), 0) << "dies while we wait";
    EXPECT_EQ(GetLastError(), ErrorInvalidWindowHandle);
    EXPECT_EQ(Send(0, 0, 1000), 0);
    EXPECT_EQ(GetLastError(), ErrorInvalidWindowHandle);
}

// A connection as no sender of this layer makes it.
int ConnectTo(WindowHandle window) {
    const int folder = open((fs::path(getenv("XDG_RUNTIME_DIR")) / "quirkmeter").c_str(), O_PATH);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/window-%zu.socket",
                  folder, static_cast<std::size_t>(window));
    const int connection = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    EXPECT_EQ(connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(folder);
    return connection;
}

TEST_F(LinuxLayer, SendersThatSayNothingOrNonsenseDoNotKeepTheOwnerFromOthers) {
    const int before = OpenDescriptors();
    int messages = 0;
    const WindowHandle window =
        OwnWindow("Window", "", [&](auto, auto, auto) { return ++messages; });
    std::vector<int> connections;
    const std::string whole(24, 'x');
    for (const std::string& packet : {std::string(1, 'x'), whole + 'x', std::string(100000, 'x')}) {
        connections.push_back(ConnectTo(window));
        send(connections.back(), packet.data(), packet.size(), 0);
    }
    for (int i = 0; i < 1000; ++i) {
        connections.push_back(ConnectTo(window));
        if (i % 50 == 0) ServeMessages(0);
    }
    const int impatient = ConnectTo(window);
    send(impatient, whole.data(), whole.size(), 0);
    close(impatient);
    for (int i = 0; i < 10; ++i) ServeMessages(0);
    EXPECT_EQ(messages, 0);
    EXPECT_LT(OpenDescriptors(), before + static_cast<int>(connections.size()) + 100);

    std::atomic<std::uintptr_t> reply = 0;
    std::thread sender([&] {
        std::uintptr_t answer = 0;
        Send(window, 0, 5000, &answer);
        reply = answer;
    });
    EXPECT_TRUE(Becomes([&] {
        ServeMessages(0);
        return messages > 0;
    }));
    sender.join();
    EXPECT_EQ(reply, 1u);

    for (const int connection : connections) close(connection);
    DropWindow(window);
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_THAT(PassingFiles(), IsEmpty());
}

TEST_F(LinuxLayer, AHandlerMayDropItsWindow) {
    WindowHandle window = 0;
    int messages = 0;
    window = OwnWindow("Window", "", [&](auto, auto, auto) {
        DropWindow(window);
        return ++messages;
    });
    const int first = ConnectTo(window);
    const int second = ConnectTo(window);
    const std::string request(24, 'x');
    send(first, request.data(), request.size(), 0);
    send(second, request.data(), request.size(), 0);
    ServeMessages(1000);
    std::int64_t reply = 0;
    EXPECT_EQ(recv(first, &reply, sizeof reply, 0), 8);
    EXPECT_EQ(reply, 1);
    EXPECT_LE(recv(second, &reply, sizeof reply, 0), 0) << "the window has gone";
    EXPECT_EQ(messages, 1);
    EXPECT_EQ(FindWindowA("Window", nullptr), 0u);
    close(first);
    close(second);
}

std::string AtomName(int atom) {
    char name[256];
    const std::uint32_t length =
        GlobalGetAtomNameA(static_cast<std::uint16_t>(atom), name, sizeof name);
    return std::string(name, length);
}

TEST_F(LinuxLayer, AtomsAreSharedAndCounted) {
    const int atom = Process(Peer("atom", "FSASMLIB:IPC:1A4:1", "1")).Number();
    EXPECT_GE(atom, 0xC000);
    EXPECT_EQ(AtomName(atom), "FSASMLIB:IPC:1A4:1");
    EXPECT_EQ(GlobalAddAtomA("fsasmlib:ipc:1a4:1"), atom);
    const int other = GlobalAddAtomA("other");
    EXPECT_NE(other, atom);

    char cut[5];
    EXPECT_EQ(GlobalGetAtomNameA(static_cast<std::uint16_t>(atom), cut, sizeof cut), 4u);
    EXPECT_STREQ(cut, "FSAS");

    GlobalDeleteAtom(static_cast<std::uint16_t>(atom));
    EXPECT_EQ(AtomName(atom), "FSASMLIB:IPC:1A4:1") << "added twice, deleted once";
    GlobalDeleteAtom(static_cast<std::uint16_t>(atom));
    EXPECT_EQ(AtomName(atom), "");
    EXPECT_EQ(GetLastError(), ErrorInvalidHandle);
    EXPECT_EQ(AtomName(other), "other");
    EXPECT_EQ(AtomName(0x3FFF), "");

    EXPECT_EQ(AtomName(GlobalAddAtomA(std::string(255, 'n').c_str())), std::string(255, 'n'));
    EXPECT_EQ(GlobalAddAtomA(std::string(256, 'n').c_str()), 0);
    EXPECT_EQ(GlobalAddAtomA(""), 0);
}

TEST_F(LinuxLayer, NoCountOfAnAtomIsLostWhenProcessesAddAtOnce) {
    Process first(Peer("atom", "name", "5000"));
    Process second(Peer("atom", "name", "5000"));
    const auto atom = static_cast<std::uint16_t>(first.Number());
    EXPECT_EQ(second.Number(), atom);
    for (int i = 0; i < 9999; ++i) GlobalDeleteAtom(atom);
    EXPECT_EQ(AtomName(atom), "name");
    GlobalDeleteAtom(atom);
    EXPECT_EQ(AtomName(atom), "");
}

TEST_F(LinuxLayer, RegisteredMessagesHaveOneNumberInAllProcesses) {
    const std::uint32_t message = RegisterWindowMessageA("FSASMLIB:IPC");
    EXPECT_GE(message, 0xC000u);
    EXPECT_NE(RegisterWindowMessageA("another"), message);
    EXPECT_EQ(Process(Peer("message", "fsasmlib:ipc")).Number(), static_cast<int>(message));
}

TEST_F(LinuxLayer, ADamagedAtomTableIsNotBelieved) {
    GlobalAddAtomA("first");
    const std::string sound = Content(Folder() / "atoms");
    for (const std::string& damaged :
         {sound.substr(0, 100), std::string(20 << 20, '\xFF'), std::string(sound.size(), '\0'),
          std::string("\1\0\0\0", 4) + std::string(9000, 'n')}) {
        Write(Folder() / "atoms", damaged);
        EXPECT_EQ(AtomName(0xC000), "");
        EXPECT_EQ(AtomName(0xC001), "");
        const int atom = GlobalAddAtomA("again");
        EXPECT_EQ(AtomName(atom), "again");
        GlobalDeleteAtom(static_cast<std::uint16_t>(atom));
        EXPECT_EQ(AtomName(atom), "");
    }
}

MappingHandle Create(const std::string& name, std::uint32_t sizeHigh = 0) {
    return CreateFileMappingA(InvalidFileHandle, nullptr, PageReadWrite, sizeHigh, 32768,
                              name.c_str());
}

TEST_F(LinuxLayer, AMappingIsSharedUntilItsLastHolderHasGone) {
    EXPECT_EQ(OpenFileMappingA(FileMapWrite, false, "block"), 0u);
    EXPECT_EQ(GetLastError(), ErrorFileNotFound);
    const int before = OpenDescriptors();

    Process maker(Peer("map", "block"));
    EXPECT_EQ(maker.Number(), static_cast<int>(ErrorSuccess));
    EXPECT_EQ(maker.Number(), 0) << "new memory is zero";
    const MappingHandle mapping = Create("block");
    EXPECT_EQ(GetLastError(), ErrorAlreadyExists);
    auto* view = static_cast<char*>(MapViewOfFile(mapping, FileMapWrite, 0, 0, 0));
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(Becomes([&] { return static_cast<volatile char*>(view)[32767] == 42; }));
    EXPECT_EQ(ViewSize(view), 32768u);
    EXPECT_EQ(ViewSize(view + 1), 0u);

    maker.Kill();
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_FALSE(CloseHandle(mapping));
    {
        Process second(Peer("map", "block"));
        EXPECT_EQ(second.Number(), static_cast<int>(ErrorAlreadyExists)) << "the view holds it";
        EXPECT_EQ(second.Number(), 42);
    }
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(UnmapViewOfFile(view));
    EXPECT_EQ(ViewSize(view), 0u);
    EXPECT_THAT(PassingFiles(), IsEmpty());

    Process third(Peer("map", "block"));
    EXPECT_EQ(third.Number(), static_cast<int>(ErrorSuccess));
    EXPECT_EQ(third.Number(), 0);
    third.Kill();
    const MappingHandle other = Create("other");
    EXPECT_THAT(PassingFiles(), ElementsAre("mapping-other")) << "what was killed is swept";
    EXPECT_TRUE(CloseHandle(other));
    EXPECT_EQ(OpenFileMappingA(FileMapWrite, false, "block"), 0u);
    EXPECT_EQ(MapViewOfFile(mapping, FileMapWrite, 0, 0, 0), nullptr);
    EXPECT_EQ(GetLastError(), ErrorInvalidHandle);
    EXPECT_EQ(OpenDescriptors(), before + 2) << "one output for each peer still in sight";
}

TEST_F(LinuxLayer, NoNameOfAMappingLeadsOutOfTheFolderOrToAnother) {
    std::vector<MappingHandle> mappings;
    for (const char* name :
         {"../../escaped", "/tmp/escaped", ".", "a/b", "a%2Fb", "A/B", "\xE4\n"}) {
        mappings.push_back(Create(name));
        EXPECT_NE(mappings.back(), 0u) << name;
        EXPECT_EQ(GetLastError(), ErrorSuccess) << name;
    }
    EXPECT_EQ(PassingFiles().size(), mappings.size());
    for (const MappingHandle mapping : mappings) CloseHandle(mapping);
    EXPECT_EQ(Create(std::string(300, '/')), 0u);
    EXPECT_EQ(Create(""), 0u);
    EXPECT_EQ(Create("huge", 0x7FFFFFFF), 0u);
    EXPECT_EQ(GetLastError(), ErrorNotEnoughMemory);
    EXPECT_THAT(PassingFiles(), IsEmpty());
}

TEST_F(LinuxLayer, AProcessKilledAtAnyMomentLeavesTheFolderUsable) {
    for (int i = 0; i < 30; ++i) {
        Process churner(Peer("churn"));
        EXPECT_EQ(churner.Line(), "churning");
        std::this_thread::sleep_for(std::chrono::microseconds(i * 37));
        churner.Kill();
        EXPECT_EQ(FindWindowA("Churned", nullptr), 0u);
        EXPECT_EQ(OpenFileMappingA(FileMapWrite, false, "churned"), 0u);
        EXPECT_THAT(PassingFiles(), IsEmpty());
        EXPECT_EQ(AtomName(GlobalAddAtomA("mine")), "mine");
    }
}

TEST_F(LinuxLayer, OnlyAFolderThatIsOursAloneIsUsed) {
    const auto expectRefused = [] {
        EXPECT_EQ(OwnWindow("Window", "", {}), 0u);
        EXPECT_EQ(FindWindowA("Window", nullptr), 0u);
        EXPECT_EQ(RegisterWindowMessageA("message"), 0u);
        EXPECT_EQ(GlobalAddAtomA("atom"), 0);
        EXPECT_EQ(Create("block"), 0u);
        EXPECT_NE(GetLastError(), ErrorSuccess);
        EXPECT_FALSE(ClaimSingleInstance("Quirkmeter"));
    };
    testing::internal::CaptureStderr();
    fs::create_directory(root_ / "elsewhere");
    fs::permissions(root_ / "elsewhere", fs::perms::owner_all);
    fs::create_symlink(root_ / "elsewhere", Folder());
    expectRefused();
    EXPECT_TRUE(fs::is_empty(root_ / "elsewhere"));
    fs::remove(Folder());
    fs::create_directory(Folder());
    fs::permissions(Folder(), fs::perms::owner_all | fs::perms::group_exec);
    expectRefused();
    fs::permissions(Folder(), fs::perms::owner_all);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(Folder().c_str(), 12345, 12345), 0);
        expectRefused();
    }
    const std::string complaint = testing::internal::GetCapturedStderr();
    EXPECT_THAT(complaint, StartsWith(Folder().string()));
    EXPECT_EQ(std::ranges::count(complaint, '\n'), 1);

    setenv("XDG_RUNTIME_DIR", (root_ / "missing").c_str(), 1);
    setenv("TMPDIR", root_.c_str(), 1);
    EXPECT_NE(RegisterWindowMessageA("message"), 0u);
    const fs::path fallback = root_ / ("quirkmeter-" + std::to_string(geteuid()));
    EXPECT_EQ(fs::status(fallback).permissions(), fs::perms::owner_all);
    unsetenv("TMPDIR");
}

TEST_F(LinuxLayer, OneProcessAtATimeIsTheSingleInstance) {
    Process first(Peer("claim"));
    EXPECT_EQ(first.Number(), 1);
    EXPECT_EQ(Process(Peer("claim")).Number(), 0);
    first.Kill();
    EXPECT_EQ(Process(Peer("claim")).Number(), 1);
}

// --- Keys -------------------------------------------------------------------------------------

class KeyTest : public LinuxLayer {
   protected:
    void SetUp() override {
        setenv("DISPLAY", (":" + server_.Line()).c_str(), 1);
        display_ = XOpenDisplay(nullptr);
        ASSERT_NE(display_, nullptr) << "Xvfb did not start";
        // Somebody else's window has the focus.
        const Window window =
            XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 9, 9, 0, 0, 0);
        XSelectInput(display_, window, StructureNotifyMask);
        XMapWindow(display_, window);
        XEvent event;
        do {
            XNextEvent(display_, &event);
        } while (event.type != MapNotify);
        XSetInputFocus(display_, window, RevertToNone, CurrentTime);
        XGrabKeyboard(display_, window, False, GrabModeAsync, GrabModeAsync, CurrentTime);
        XSync(display_, False);
        GetAsyncKeyState('A');
    }
    void Press(KeySym key, bool down) {
        XTestFakeKeyEvent(display_, XKeysymToKeycode(display_, key), down, CurrentTime);
        XSync(display_, False);
    }

    Process server_{{"Xvfb", "-displayfd", "1", "-screen", "0", "64x64x8", "-nolisten", "tcp"}};
    Display* display_ = nullptr;
};

constexpr std::int16_t Down = std::int16_t(0x8000);
constexpr std::int16_t DownAndPressed = std::int16_t(0x8001);

// One test, because a process opens its display once.
TEST_F(KeyTest, KeysAreSeenWhoeverHasTheFocusUntilTheDisplayGoesAway) {
    EXPECT_EQ(GetAsyncKeyState('S'), 0);
    Press(XK_s, true);
    Press(XK_Control_R, true);
    EXPECT_EQ(GetAsyncKeyState('S'), DownAndPressed);
    EXPECT_EQ(GetAsyncKeyState('S'), Down);
    EXPECT_EQ(GetAsyncKeyState(17), DownAndPressed);
    EXPECT_EQ(GetAsyncKeyState(16), 0);
    EXPECT_EQ(GetAsyncKeyState('D'), 0);
    Press(XK_s, false);
    Press(XK_Control_R, false);
    EXPECT_EQ(GetAsyncKeyState('S'), 0);

    Press(XK_Shift_L, true);
    Press(XK_Shift_L, false);
    EXPECT_EQ(GetAsyncKeyState('S'), 0);
    EXPECT_EQ(GetAsyncKeyState(16), 1) << "tapped since it was asked for";
    EXPECT_EQ(GetAsyncKeyState(16), 0);
    Press(XK_F1, true);
    EXPECT_EQ(GetAsyncKeyState(112), 0) << "not one of the keys that are watched";

    // The layout changes to one that has the digits on the shifted level.
    const KeyCode digit = XKeysymToKeycode(display_, XK_1);
    KeySym shifted[] = {XK_ampersand, XK_1};
    XChangeKeyboardMapping(display_, digit, 2, shifted, 1);
    XSync(display_, False);
    XTestFakeKeyEvent(display_, digit, True, CurrentTime);
    XSync(display_, False);
    EXPECT_EQ(GetAsyncKeyState('1'), DownAndPressed);
    EXPECT_EQ(GetAsyncKeyState('2'), 0);

    XSetIOErrorExitHandler(
        display_, [](Display*, void*) {}, nullptr);
    server_.Kill();
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetAsyncKeyState('1'), 0);
    EXPECT_EQ(GetAsyncKeyState('1'), 0);
    testing::internal::GetCapturedStderr();
}

TEST_F(LinuxLayer, NoKeyIsDownWithoutADisplay) {
    EXPECT_EQ(Process({"env", "-u", "DISPLAY", Peer()[0], "key"}).Number(), 0);
}

// --- Sounds -----------------------------------------------------------------------------------

// One channel of 16-bit samples, 8000 a second.
std::string WaveFile(const std::string& samples) {
    const auto number = [](std::size_t value) {
        const auto bytes = static_cast<std::uint32_t>(value);
        return std::string(reinterpret_cast<const char*>(&bytes), 4);
    };
    return "RIFF" + number(36 + samples.size()) + "WAVEfmt " + number(16) +
           std::string("\1\0\1\0", 4) + number(8000) + number(16000) + std::string("\2\0\20\0", 4) +
           "data" + number(samples.size()) + samples;
}

TEST_F(LinuxLayer, ASoundReachesTheDeviceOrThereIsSilence) {
    std::string samples;
    for (int i = 0; i < 4000; ++i) samples += static_cast<char>(i * 7 % 251);
    const fs::path wave = root_ / "sound.wav";
    Write(wave, WaveFile(samples));
    Write(root_ / "device.conf", "pcm.!default { type file slave.pcm { type null } file \"" +
                                     (root_ / "played").string() + "\" format raw }\n");
    Write(root_ / "none.conf", "\n");

    const auto play = [&](const std::string& configuration) {
        return std::vector<std::string>{"env",
                                        "CANBERRA_DRIVER=alsa",
                                        "ALSA_CONFIG_PATH=" + (root_ / configuration).string(),
                                        "sh",
                                        "-c",
                                        "exec \"$@\" 2>" + (root_ / "complaints").string(),
                                        "sh",
                                        Peer()[0],
                                        "play",
                                        wave.string()};
    };
    {
        Process player(play("device.conf"));
        EXPECT_EQ(player.Number(), 1);
        EXPECT_TRUE(Becomes([&] { return Content(root_ / "played").ends_with(samples); }));
    }
    Process silent(play("none.conf"));
    EXPECT_EQ(silent.Number(), 0);
    EXPECT_EQ(silent.Number(), 0);
    EXPECT_EQ(Content(root_ / "complaints"), "");
}

// --- Shell and files --------------------------------------------------------------------------

TEST_F(LinuxLayer, ShellStartsAProgramOrOpensADocument) {
    const fs::path report = root_ / "a report";
    fs::create_directory(root_ / "folder");
    fs::create_symlink(Peer()[0], root_ / "folder/program.exe");
    const int leaky = open("/dev/null", O_RDONLY);
    ASSERT_EQ(dup2(leaky, 400), 400);
    const auto execute = [](const fs::path& file, const std::string& parameters,
                            const std::string& directory) {
        return ShellExecuteA(0, "Open", file.c_str(), parameters.c_str(), directory.c_str(),
                             ShowMinimized);
    };
    const auto lines = [&](const fs::path& path) {
        EXPECT_TRUE(Becomes([&] { return fs::exists(path); }));
        std::istringstream text(Content(path));
        std::vector<std::string> found;
        for (std::string line; std::getline(text, line);) found.push_back(line);
        fs::remove(path);
        return found;
    };
    const fs::path plain = root_ / "report";
    const auto ownSession = testing::Ne(std::to_string(getsid(0)));
    EXPECT_EQ(execute(root_ / "folder/program.exe", "report " + plain.string() + "  0 $(id)", "0"),
              33);
    EXPECT_THAT(lines(plain), ElementsAre(plain, "0", "$(id)", root_ / "folder", ownSession));
    EXPECT_EQ(execute(root_ / "folder/program.exe", "report " + plain.string(), root_), 33);
    EXPECT_THAT(lines(plain), ElementsAre(plain, root_, ownSession));

    const fs::path document = root_ / "a document.htm";
    Write(document, "<html>");
    const std::string path = getenv("PATH");
    setenv("PATH", root_.c_str(), 1);
    EXPECT_EQ(execute(document, "0", "0"), 31) << "nothing to open it with";
    fs::create_symlink(Peer()[0], root_ / "xdg-open");
    EXPECT_EQ(execute(document, "0", "0"), 33);
    EXPECT_THAT(lines(document.string() + ".opened"),
                ElementsAre(document.string() + ".opened", root_, ownSession));
    setenv("PATH", path.c_str(), 1);

    EXPECT_EQ(execute(root_ / "missing", "0", "0"), 2);
    fs::permissions(document, fs::perms::owner_all);
    Write(document, "#!/no/such/interpreter\n");
    EXPECT_EQ(execute(document, "0", "0"), 31);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left to wait for";
    close(leaky);
    close(400);
}

TEST_F(LinuxLayer, AFileIsReplacedAsAWhole) {
    const fs::path file = root_ / "file";
    const mode_t mask = umask(027);
    EXPECT_TRUE(ReplaceFile(file, "first"));
    umask(mask);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    fs::permissions(file, fs::perms(0604));
    fs::create_symlink("file", root_ / "link");
    EXPECT_TRUE(ReplaceFile(root_ / "link", "second"));
    EXPECT_TRUE(fs::is_symlink(root_ / "link"));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0604));
    EXPECT_EQ(Content(file), "second");
    const fs::path home = fs::current_path();
    fs::current_path(root_);
    EXPECT_TRUE(ReplaceFile("file", ""));
    fs::current_path(home);
    EXPECT_EQ(Content(file), "");
}

TEST_F(LinuxLayer, AFileThatCannotBeReplacedStands) {
    const fs::path file = root_ / "file";
    Write(file, "old");
    const auto limitFileSize = [](rlim_t bytes) {
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    std::signal(SIGXFSZ, SIG_IGN);
    limitFileSize(1000);
    EXPECT_FALSE(ReplaceFile(file, std::string(5000, 'n')));
    limitFileSize(RLIM_INFINITY);
    fs::permissions(file, fs::perms::owner_read);
    EXPECT_FALSE(ReplaceFile(file, "new"));
    EXPECT_EQ(Content(file), "old");

    fs::create_directory(root_ / "folder");
    EXPECT_FALSE(ReplaceFile(root_ / "folder", "new"));
    EXPECT_FALSE(ReplaceFile(root_ / "missing/file", "new"));
    fs::create_symlink("nowhere", root_ / "link");
    EXPECT_FALSE(ReplaceFile(root_ / "link", "new"));
    EXPECT_EQ(std::ranges::distance(fs::directory_iterator(root_)), 4) << "no temporary file stays";
}

TEST_F(LinuxLayer, TheSeparatorIsThatOfTheUsersLocale) {
    Write(root_ / "source",
          "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    Process compiler({"localedef", "-c", "--quiet", "-i", root_ / "source", "-f", "ANSI_X3.4-1968",
                      root_ / "xx_XX"});
    compiler.Line();
    if (!fs::exists(root_ / "xx_XX/LC_NUMERIC")) GTEST_SKIP() << "no character maps here";
    const auto separator = [&](const std::string& locale) {
        return Process({"env", "-u", "LC_ALL", "LOCPATH=" + root_.string(), "LC_NUMERIC=" + locale,
                        Peer()[0], "separator"})
            .Line();
    };
    EXPECT_EQ(separator("xx_XX"), ",");
    EXPECT_EQ(separator("C"), ".");
    EXPECT_EQ(separator("no_SUCH"), ".");
}

TEST_F(LinuxLayer, SecondsSinceMidnightAreOfLocalTime) {
    setenv("TZ", "XXX-5:30", 1);
    tzset();
    const double before = static_cast<double>((time(nullptr) + 19800) % 86400);
    const double seconds = SecondsSinceMidnight();
    EXPECT_GE(seconds, 0);
    EXPECT_LT(seconds, 86400);
    EXPECT_LT(std::fmod(seconds - before + 86400, 86400), 5);
    unsetenv("TZ");
    tzset();
}

}  // namespace
}  // namespace quirkmeter::platform
