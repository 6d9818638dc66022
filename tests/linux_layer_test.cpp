#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <filesystem>
#include <iterator>
#include <vector>

#include "platform/platform.h"
#include "process.h"

// Last, because Xlib makes macros of names that the test library uses.
// clang-format off
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
// clang-format on

// After so many calls from now on, so many find no free descriptor.
static int PassingOpens = 0;
static int FailingOpens = 0;

// In the place of the C library's, for the layer as well.
extern "C" int openat(int folder, const char* name, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    bool fails = PassingOpens == 0 && FailingOpens > 0;
    if (!fails) {
        PassingOpens = std::max(PassingOpens - 1, 0);
        return static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
    }
    --FailingOpens;
    errno = EMFILE;
    return -1;
}

namespace quirkmeter::platform {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

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
            std::string name = entry.path().filename();
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
    Process owner(Peer("own", "UIPCMAIN", "The Title"));
    WindowHandle window = static_cast<WindowHandle>(owner.Number());
    ASSERT_NE(window, 0u);
    EXPECT_EQ(FindWindowExA(0, 0, "UIPCMAIN", nullptr), window);
    EXPECT_EQ(FindWindowA("uipcmain", "THE title"), window);
    EXPECT_EQ(FindWindowA("UIPCMAIN", "The"), 0u);
    EXPECT_EQ(FindWindowA("UIPCMAI", nullptr), 0u);
    std::uintptr_t reply = 0;
    EXPECT_NE(Send(window, 5, 60000, &reply), 0);
    EXPECT_EQ(reply, 0xFFFFFFFF0000C002 + 0xC001 + 5);

    auto start = Clock::now();
    EXPECT_EQ(Send(window, -1, 30), 0);
    EXPECT_EQ(GetLastError(), ErrorSuccess) << "the time is up";
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
    owner.Kill();
    EXPECT_EQ(Send(window, 0, 60000), 0);
    EXPECT_EQ(GetLastError(), ErrorInvalidWindowHandle);
    EXPECT_EQ(FindWindowA("UIPCMAIN", nullptr), 0u);
    EXPECT_THAT(PassingFiles(), IsEmpty());

    Process successor(Peer("own", "UIPCMAIN", ""));
    WindowHandle next = static_cast<WindowHandle>(successor.Number());
    EXPECT_GT(next, window) << "an old handle must not lead to a new window";
    EXPECT_EQ(Send(next, -2, 60000), 0) << "dies while we wait";
    EXPECT_EQ(GetLastError(), ErrorInvalidWindowHandle);
}

TEST_F(LinuxLayer, AWindowAnswersWhoStillWaitsAndGoesWithoutATrace) {
    int before = OpenDescriptors();
    int messages = 0;
    WindowHandle window =
        OwnWindow("Window", "", [&](auto, auto, auto) { return std::intptr_t{++messages}; });
    EXPECT_EQ(Send(window, 0, 1), 0);
    ServeMessages(0);
    EXPECT_EQ(messages, 0) << "the sender has given up";
    DropWindow(window);
    EXPECT_EQ(FindWindowA("Window", nullptr), 0u);
    EXPECT_THAT(PassingFiles(), IsEmpty());
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(LinuxLayer, OneProcessAtATimeIsTheSingleInstance) {
    {
        Process first(Peer("claim"));
        EXPECT_EQ(first.Number(), 1);
        EXPECT_EQ(Process(Peer("claim")).Number(), 0);
        EXPECT_EQ(InstanceProcess("Quirkmeter"), static_cast<std::uint32_t>(first.Pid()));
    }
    EXPECT_EQ(InstanceProcess("Quirkmeter"), 0u);
    EXPECT_EQ(Process(Peer("claim")).Number(), 1);
}

TEST_F(LinuxLayer, AMomentWithoutDescriptorsHidesNoWindow) {
    Process owner(Peer("own", "ThunderRT6FormDC", "FSQMHC"));
    WindowHandle window = static_cast<WindowHandle>(owner.Number());
    testing::internal::CaptureStderr();
    for (int step : {0, 1, 2, 3, 4}) {
        PassingOpens = step;
        FailingOpens = 3;
        EXPECT_EQ(FindWindowA("ThunderRT6FormDC", "FSQMHC"), window) << step;
        EXPECT_EQ(FailingOpens, 0) << step;
    }
    FailingOpens = 1000;
    EXPECT_EQ(FindWindowA("ThunderRT6FormDC", "FSQMHC"), 0u);
    EXPECT_GT(FailingOpens, 900) << "it does not ask for ever";
    FailingOpens = 0;

    rlimit room;
    getrlimit(RLIMIT_NOFILE, &room);
    int free = dup(0);
    close(free);
    rlimit forTheFolder{static_cast<rlim_t>(free) + 1, room.rlim_max};
    setrlimit(RLIMIT_NOFILE, &forTheFolder);
    EXPECT_EQ(Send(window, 5, 60000), 0) << "there is none for the socket";
    EXPECT_EQ(GetLastError(), ErrorNotEnoughMemory) << "and the window is not gone for that";
    setrlimit(RLIMIT_NOFILE, &room);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

std::string AtomName(int atom) {
    char name[256];
    return {name, GlobalGetAtomNameA(static_cast<std::uint16_t>(atom), name, sizeof name)};
}

TEST_F(LinuxLayer, AtomsAreSharedAndCounted) {
    int atom = Process(Peer("atom", "FSASMLIB:IPC:1A4:1")).Number();
    EXPECT_GE(atom, 0xC000);
    EXPECT_EQ(GlobalAddAtomA("fsasmlib:ipc:1a4:1"), atom);
    std::string longest(255, 'n');
    int other = GlobalAddAtomA(longest.c_str());
    char cut[5];
    EXPECT_EQ(GlobalGetAtomNameA(static_cast<std::uint16_t>(atom), cut, sizeof cut), 4u);
    EXPECT_STREQ(cut, "FSAS");
    GlobalDeleteAtom(static_cast<std::uint16_t>(atom));
    EXPECT_EQ(AtomName(atom), "FSASMLIB:IPC:1A4:1") << "deleted once less than added";
    GlobalDeleteAtom(static_cast<std::uint16_t>(atom));
    EXPECT_EQ(AtomName(atom), "");
    EXPECT_EQ(GetLastError(), ErrorInvalidHandle);
    EXPECT_EQ(AtomName(other), longest);
    for (const std::string& name : {longest + 'n', std::string()})
        EXPECT_EQ(GlobalAddAtomA(name.c_str()), 0);

    std::uint32_t message = RegisterWindowMessageA("FSASMLIB:IPC");
    EXPECT_GE(message, 0xC000u);
    EXPECT_NE(RegisterWindowMessageA("another"), message);
    EXPECT_EQ(Process(Peer("message", "fsasmlib:ipc")).Number(), static_cast<int>(message));
}

MappingHandle Create(const char* name, std::uint32_t sizeHigh = 0) {
    return CreateFileMappingA(InvalidFileHandle, nullptr, PageReadWrite, sizeHigh, 32768, name);
}

TEST_F(LinuxLayer, AMappingIsSharedUntilItsLastHolderHasGone) {
    constexpr char Name[] = "FSASMLIB:IPC:1A4:1";
    EXPECT_EQ(OpenFileMappingA(FileMapWrite, false, Name), 0u);
    EXPECT_EQ(GetLastError(), ErrorFileNotFound);
    int before = OpenDescriptors();
    // The last error and the last byte, as the next process to make the block finds them.
    auto found = [&] {
        Process peer(Peer("map", Name));
        int error = peer.Number();
        return std::pair(error, peer.Number());
    };
    MappingHandle mapping = 0;
    char* view = nullptr;
    {
        Process maker(Peer("map", Name));
        maker.Line();
        EXPECT_EQ(maker.Number(), 0) << "new memory is zero";
        mapping = Create(Name);
        EXPECT_EQ(GetLastError(), ErrorAlreadyExists);
        view = static_cast<char*>(MapViewOfFile(mapping, FileMapWrite, 0, 0, 0));
        ASSERT_NE(view, nullptr);
        EXPECT_TRUE(Becomes([&] { return static_cast<volatile char*>(view)[32767] == 42; }));
    }
    EXPECT_EQ(ViewSize(view), 32768u);
    EXPECT_EQ(ViewSize(view + 1), 0u);
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_FALSE(CloseHandle(mapping));
    EXPECT_EQ(MapViewOfFile(mapping, FileMapWrite, 0, 0, 0), nullptr);
    EXPECT_EQ(found(), std::pair(static_cast<int>(ErrorAlreadyExists), 42)) << "the view holds it";
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(UnmapViewOfFile(view));
    EXPECT_THAT(PassingFiles(), IsEmpty());
    EXPECT_EQ(found(), std::pair(static_cast<int>(ErrorSuccess), 0));
    mapping = Create("../other");
    EXPECT_THAT(PassingFiles(), ElementsAre("mapping-%2E%2E%2Fother")) << "what died is swept";
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(Create("huge", 0x7FFFFFFF), 0u);
    EXPECT_THAT(PassingFiles(), IsEmpty());
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(LinuxLayer, OnlyAFolderThatIsOursAloneIsUsed) {
    fs::path elsewhere = root_ / "elsewhere";
    fs::create_directory(elsewhere);
    fs::permissions(elsewhere, fs::perms::owner_all);
    auto expectRefused = [] {
        EXPECT_EQ(OwnWindow("Window", "", {}), 0u);
        EXPECT_EQ(GlobalAddAtomA("atom"), 0);
        EXPECT_FALSE(ClaimSingleInstance("Quirkmeter"));
    };
    testing::internal::CaptureStderr();
    fs::create_symlink(elsewhere, Folder());
    expectRefused();
    fs::remove(Folder());
    fs::rename(elsewhere, Folder());
    if (geteuid() == 0) {
        ASSERT_EQ(chown(Folder().c_str(), 12345, 12345), 0);
        expectRefused();
        ASSERT_EQ(chown(Folder().c_str(), 0, 0), 0);
    }
    fs::permissions(Folder(), fs::perms::group_exec, fs::perm_options::add);
    expectRefused();
    std::string complaint = testing::internal::GetCapturedStderr();
    EXPECT_THAT(complaint, testing::StartsWith(Folder().string()));
    EXPECT_EQ(std::ranges::count(complaint, '\n'), 1);

    setenv("XDG_RUNTIME_DIR", (root_ / "missing").c_str(), 1);
    setenv("TMPDIR", root_.c_str(), 1);
    EXPECT_NE(RegisterWindowMessageA("message"), 0u);
    fs::path fallback = root_ / ("quirkmeter-" + std::to_string(geteuid()));
    EXPECT_EQ(fs::status(fallback).permissions(), fs::perms::owner_all);
    unsetenv("TMPDIR");
}

constexpr std::int16_t Down = std::int16_t(0x8000);
constexpr std::int16_t DownAndPressed = std::int16_t(0x8001);

// One test, because a process opens its display once.
TEST_F(LinuxLayer, KeysAreSeenWhoeverHasTheFocusUntilTheDisplayGoesAway) {
    EXPECT_EQ(Process({"env", "-u", "DISPLAY", Peer()[0], "key"}).Number(), 0) << "no display";
    Process server({"Xvfb", "-displayfd", "1", "-screen", "0", "64x64x8", "-nolisten", "tcp"});
    setenv("DISPLAY", (":" + server.Line()).c_str(), 1);
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr) << "Xvfb did not start";
    // Somebody else has the keyboard.
    XGrabKeyboard(display, DefaultRootWindow(display), False, GrabModeAsync, GrabModeAsync,
                  CurrentTime);
    auto press = [display](KeySym key, bool down) {
        XTestFakeKeyEvent(display, XKeysymToKeycode(display, key), down, CurrentTime);
        XSync(display, False);
    };
    EXPECT_EQ(GetAsyncKeyState('S'), 0);
    press(XK_s, true);
    press(XK_Control_R, true);
    EXPECT_EQ(GetAsyncKeyState('S'), DownAndPressed);
    EXPECT_EQ(GetAsyncKeyState('S'), Down);
    EXPECT_EQ(GetAsyncKeyState(17), DownAndPressed);
    EXPECT_EQ(GetAsyncKeyState(16), 0);
    EXPECT_EQ(GetAsyncKeyState('D'), 0);
    press(XK_s, false);
    press(XK_Shift_L, true);
    press(XK_Shift_L, false);
    EXPECT_EQ(GetAsyncKeyState('S'), 0);
    EXPECT_EQ(GetAsyncKeyState(16), 1) << "tapped since it was asked for";
    EXPECT_EQ(GetAsyncKeyState(16), 0);

    // The layout changes to one that has the digits on the shifted level.
    KeySym shifted[] = {XK_ampersand, XK_1};
    XChangeKeyboardMapping(display, XKeysymToKeycode(display, XK_1), 2, shifted, 1);
    XSync(display, False);
    press(XK_ampersand, true);
    EXPECT_EQ(GetAsyncKeyState('1'), DownAndPressed);
    EXPECT_EQ(GetAsyncKeyState('2'), 0);

    server.Kill();
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetAsyncKeyState('1'), 0);
    EXPECT_EQ(GetAsyncKeyState('1'), 0);
    testing::internal::GetCapturedStderr();
}

// One channel of 4000 16-bit samples, 8000 a second.
constexpr std::string_view WaveHeader(
    "RIFF\x64\x1F\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1F\0\0\x80\x3E\0\0\2\0\x10\0data\x40\x1F\0\0",
    44);

TEST_F(LinuxLayer, ASoundReachesTheDeviceOrThereIsSilence) {
    std::string samples;
    for (int i = 0; i < 8000; ++i) samples += static_cast<char>(i * 7 % 251);
    Write(root_ / "sound.wav", std::string(WaveHeader) + samples);
    Write(root_ / "device.conf", "pcm.!default { type file slave.pcm { type null } file \"" +
                                     (root_ / "played").string() + "\" format raw }\n");
    Write(root_ / "none.conf", "\n");
    auto play = [this](const std::string& configuration) {
        return std::vector<std::string>{
            "sh", "-c",
            "cd " + root_.string() + " && CANBERRA_DRIVER=alsa ALSA_CONFIG_PATH=" + configuration +
                " exec " + Peer()[0] + " play sound.wav 2>complaints"};
    };
    Process player(play("device.conf"));
    EXPECT_EQ(player.Number(), 1);
    EXPECT_TRUE(Becomes([&] { return Content(root_ / "played").ends_with(samples); }));
    EXPECT_EQ(Process(play("none.conf")).Number(), 0);
    EXPECT_EQ(Content(root_ / "complaints"), "");
}

TEST_F(LinuxLayer, ShellStartsAProgramOrOpensADocument) {
    fs::path program = root_ / "folder/program.exe";
    fs::path report = root_ / "report";
    fs::path document = root_ / "a document.htm";
    fs::create_directory(root_ / "folder");
    fs::create_symlink(Peer()[0], program);
    Write(document, "<html>");
    setenv("STARTER_SESSION", std::to_string(getsid(0)).c_str(), 1);
    int leaky = open("/dev/null", O_RDONLY);
    ASSERT_EQ(dup2(leaky, 400), 400);
    auto execute = [](const fs::path& file, const std::string& parameters,
                      const std::string& directory) {
        return ShellExecuteA(0, "Open", file.c_str(), parameters.c_str(), directory.c_str(),
                             ShowMinimized);
    };
    auto told = [](const fs::path& path) {
        EXPECT_TRUE(Becomes([&] { return fs::exists(path); }));
        return Content(path);
    };
    EXPECT_EQ(execute(program, "report " + report.string() + "  0 $(id)", root_), 33);
    EXPECT_EQ(told(report), "0\n$(id)\n" + root_.string() + "\n");

    std::string path = getenv("PATH");
    // As on a file system that has no permissions.
    fs::permissions(document, fs::perms::owner_all);
    setenv("PATH", root_.c_str(), 1);
    EXPECT_EQ(execute(document, "0", "0"), 31) << "nothing to open it with";
    fs::create_symlink(Peer()[0], root_ / "xdg-open");
    EXPECT_EQ(execute(document, "0", "0"), 33);
    EXPECT_EQ(told(document.string() + ".opened"),
              document.string() + "\n" + root_.string() + "\n");
    setenv("PATH", path.c_str(), 1);

    EXPECT_EQ(execute(root_ / "missing", "0", "0"), 2);
    Write(document, "#!/no/such/interpreter\n");
    EXPECT_EQ(execute(document, "0", "0"), 31);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left to wait for";
    close(leaky);
    close(400);
}

// Replaces it as a user who may write files of root's, but not everywhere as root may, with room for
// a thousand bytes.
bool UserReplaces(const fs::path& path, const std::string& content) {
    pid_t user = fork();
    if (user == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{1000, 1000};
        bool ready = setrlimit(RLIMIT_FSIZE, &limit) == 0 && (geteuid() != 0 || setuid(65534) == 0);
        _exit(!ready || !ReplaceFile(path, content));
    }
    return ExitCode(user) == 0;
}

TEST_F(LinuxLayer, AFileIsReplacedAsAWholeOrStands) {
    fs::path file = root_ / "file";
    mode_t mask = umask(027);
    fs::create_symlink("file", root_ / "link");
    EXPECT_TRUE(ReplaceFile(root_ / "link", "first")) << "where the link leads";
    umask(mask);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    fs::permissions(file, fs::perms(0604));
    EXPECT_TRUE(ReplaceFile(root_ / "link", "second"));
    EXPECT_TRUE(fs::is_symlink(root_ / "link"));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0604));
    EXPECT_EQ(Content(file), "second");
    fs::path home = fs::current_path();
    fs::current_path(root_);
    EXPECT_TRUE(ReplaceFile("file", "old"));
    fs::current_path(home);
    fs::permissions(file, fs::perms::owner_read);
    fs::create_directory(root_ / "folder");
    fs::create_symlink("circle", root_ / "circle");
    for (const char* name : {"file", "folder", "missing/file", "circle"})
        EXPECT_FALSE(ReplaceFile(root_ / name, "new")) << name;
    EXPECT_EQ(Content(file), "old");
    EXPECT_EQ(std::ranges::distance(fs::directory_iterator(root_)), 5) << "no temporary file stays";
}

TEST_F(LinuxLayer, AFileIsWrittenInPlaceIfItsFolderTakesNoOther) {
    fs::permissions(root_, fs::perms(0755));
    // A folder that takes none at all, one in which everybody's files stay, and one like any other.
    for (auto permissions : {fs::perms(0555), fs::perms(01777), fs::perms(0777)}) {
        fs::path folder = root_ / std::to_string(static_cast<int>(permissions));
        fs::create_directory(folder);
        Write(folder / "file", "old");
        fs::permissions(folder / "file", fs::perms(0666));
        Write(folder / "protected", "old");
        fs::permissions(folder, permissions);
        EXPECT_TRUE(UserReplaces(folder / "file", "a longer one")) << folder;
        EXPECT_TRUE(UserReplaces(folder / "file", "short")) << folder;
        EXPECT_FALSE(UserReplaces(folder / "file", std::string(5000, 'n'))) << folder;
        EXPECT_EQ(Content(folder / "file"), "short") << folder;
        EXPECT_EQ(std::ranges::distance(fs::directory_iterator(folder)), 2) << folder;
        EXPECT_EQ(UserReplaces(folder / "protected", "new"), geteuid() != 0) << folder;
        EXPECT_EQ(UserReplaces(folder / "new", "new"), permissions != fs::perms(0555)) << folder;
        fs::permissions(folder, fs::perms::owner_all);
    }
}

TEST_F(LinuxLayer, TheSeparatorIsThatOfTheUsersLocale) {
    Write(root_ / "source",
          "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
    Process compiler({"localedef", "-c", "--quiet", "-i", root_ / "source", "-f", "ANSI_X3.4-1968",
                      root_ / "xx_XX"});
    compiler.ExitCode();
    bool compiled = fs::exists(root_ / "xx_XX/LC_NUMERIC");  // else no character maps here
    for (std::string locale : {"xx_XX", "no_SUCH"}) {
        Process asker({"env", "-u", "LC_ALL", "LOCPATH=" + root_.string(), "LC_NUMERIC=" + locale,
                       Peer()[0], "separator"});
        EXPECT_EQ(asker.Line(), compiled && locale == "xx_XX" ? "," : ".") << locale;
    }
}

}  // namespace

}  // namespace quirkmeter::platform
