#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <new>

#include "child_process.h"
#include "platform/platform.h"

// These headers come last: Xlib defines macros with names that GoogleTest uses.
// clang-format off
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
// clang-format on

static int Allocations = 0;

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++Allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace quirkmeter::platform {

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using enum InstanceClaim;

void Print(auto value) {
    std::cout << value << std::endl;
}

// Runs `ask` in another process and returns its answer.
int Elsewhere(const std::function<int()>& ask) {
    return Process([&] { Print(ask()); }).Number();
}

// Creates a window in another process, prints its handle and answers its messages.
std::function<void()> Owner(const char* className, const char* title) {
    return [=] {
        Print(OwnWindow(className, title, [](auto message, auto wParam, auto lParam) {
            if (lParam == -1) pause();
            if (lParam == -2) std::raise(SIGKILL);
            if (lParam == -3) Sleep(600);
            return static_cast<std::intptr_t>(message + wParam) + lParam;
        }));
        for (;;) ServeMessages(1000);
    };
}

int OpenDescriptors() {
    return static_cast<int>(std::ranges::distance(fs::directory_iterator("/proc/self/fd")));
}

class LinuxLayer : public testing::Test {
   protected:
    LinuxLayer() {
        // Longer than the address of a socket may be.
        runtime_ = root_ / std::string(120, 'r');
        fs::create_directory(runtime_);
        setenv("XDG_RUNTIME_DIR", runtime_.c_str(), 1);
    }
    ~LinuxLayer() override { fs::remove_all(root_); }

    fs::path Folder() const { return runtime_ / "quirkmeter"; }

    fs::path root_ = MakeFolder();
    fs::path runtime_;
};

std::intptr_t Send(WindowHandle window, std::intptr_t lParam, std::uint32_t milliseconds,
                   std::uintptr_t* reply = nullptr) {
    return SendMessageTimeoutA(window, 0xC001, 0xFFFFFFFF0000C002, lParam, SendBlock, milliseconds,
                               reply);
}

TEST_F(LinuxLayer, AMessageReachesAnotherProcessAndItsAnswerComesBack) {
    Process owner(Owner("UIPCMAIN", "The Title"));
    WindowHandle window = static_cast<WindowHandle>(owner.Number());
    ASSERT_NE(window, 0u);
    EXPECT_EQ(FindWindowExA(0, 0, "UIPCMAIN", nullptr), window);
    EXPECT_EQ(FindWindowA("uipcmain", "THE title"), window);
    EXPECT_EQ(FindWindowA("UIPCMAIN", "The"), 0u);
    EXPECT_EQ(FindWindowA("UIPCMAI", nullptr), 0u);
    std::uintptr_t reply = 0;
    EXPECT_NE(Send(window, 5, 60000, &reply), 0);
    EXPECT_EQ(reply, 0xFFFFFFFF0000C002 + 0xC001 + 5);

    EXPECT_NE(Send(window, -3, 60000), 0) << "late";

    int allocations = Allocations;
    Send(window, 5, 60000);
    FindWindowA("UIPCMAIN", nullptr);
    EXPECT_EQ(Allocations - allocations, 0) << "what a tick does allocates nothing";

    auto start = Clock::now();
    EXPECT_EQ(Send(window, -1, 30), 0);
    EXPECT_EQ(GetLastError(), ErrorSuccess) << "the time is up";
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
    owner.Kill();
    EXPECT_EQ(Send(window, 0, 60000), 0);
    EXPECT_EQ(GetLastError(), ErrorInvalidWindowHandle);
    EXPECT_EQ(FindWindowA("UIPCMAIN", nullptr), 0u);

    Process successor(Owner("UIPCMAIN", ""));
    WindowHandle next = static_cast<WindowHandle>(successor.Number());
    EXPECT_EQ(PassingFiles(runtime_).size(), 2u) << "a window and its socket";
    EXPECT_GT(next, window) << "an old handle must not lead to a new window";
    EXPECT_EQ(Send(next, -2, 60000), 0) << "dies while we wait";
    EXPECT_EQ(GetLastError(), ErrorInvalidWindowHandle);
}

TEST_F(LinuxLayer, AWindowAnswersWaitingSendersAndLeavesNothingBehind) {
    int before = OpenDescriptors();
    int messages = 0;
    WindowHandle window =
        OwnWindow("Window", "", [&](auto, auto, auto) { return std::intptr_t{++messages}; });
    EXPECT_EQ(Send(window, 0, 1), 0);
    ServeMessages(0);
    EXPECT_EQ(messages, 0) << "the sender has given up";
    DropWindow(window);
    EXPECT_EQ(FindWindowA("Window", nullptr), 0u);
    EXPECT_THAT(PassingFiles(runtime_), IsEmpty());
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(LinuxLayer, OneProcessAtATimeIsTheSingleInstance) {
    auto claim = [] { return static_cast<int>(ClaimSingleInstance("Quirkmeter")); };
    {
        Process first([&] { Print(claim()); });
        EXPECT_EQ(first.Number(), static_cast<int>(Claimed));
        EXPECT_EQ(Elsewhere(claim), static_cast<int>(Taken));
        EXPECT_EQ(InstanceProcess("Quirkmeter"), static_cast<std::uint32_t>(first.Pid()));
    }
    EXPECT_EQ(InstanceProcess("Quirkmeter"), 0u);
    EXPECT_EQ(Elsewhere(claim), static_cast<int>(Claimed));
}

// Holds the folder's lock until it is killed.
std::function<void()> Locker(const fs::path& folder) {
    return [=] { Print(flock(open(folder.c_str(), O_RDONLY), LOCK_EX)); };
}

TEST_F(LinuxLayer, AnInstanceIsFoundWhileTheFolderIsLocked) {
    Process owner(Owner("ThunderRT6FormDC", "FSQMHC"));
    WindowHandle window = static_cast<WindowHandle>(owner.Number());
    Process first([] { Print(ClaimSingleInstance("Quirkmeter") == Claimed); });
    EXPECT_EQ(first.Number(), 1);
    Process locker(Locker(Folder()));
    EXPECT_EQ(locker.Number(), 0);
    EXPECT_EQ(FindWindowA("ThunderRT6FormDC", "FSQMHC"), window);
    EXPECT_EQ(InstanceProcess("Quirkmeter"), static_cast<std::uint32_t>(first.Pid()));
    EXPECT_NE(Send(window, 5, 60000), 0);

    auto start = Clock::now();
    EXPECT_EQ(ClaimSingleInstance("other"), Failed) << "nobody knows whether it runs";
    EXPECT_THAT(LastErrorText(), HasSubstr("locked"));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5)) << "the wait has an end";
    start = Clock::now();
    TerminationRequested();
    std::raise(SIGTERM);
    EXPECT_EQ(ClaimSingleInstance("other"), Failed);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(1)) << "a request to end ends the wait";
}

std::string AtomName(int atom) {
    char name[256];
    return {name, GlobalGetAtomNameA(static_cast<std::uint16_t>(atom), name, sizeof name)};
}

TEST_F(LinuxLayer, AtomsAreSharedAndCounted) {
    int before = OpenDescriptors();
    std::optional<Process> first([] { Print(GlobalAddAtomA("FSASMLIB:IPC:1A4:1")); });
    int atom = first->Number();
    EXPECT_GE(atom, 0xC000);
    for (int added : {1, 2}) EXPECT_EQ(GlobalAddAtomA("fsasmlib:ipc:1a4:1"), atom) << added;
    int other = GlobalAddAtomA("FSASMLIB:IPC:1A4:2");
    EXPECT_NE(other, atom);
    first.reset();
    EXPECT_EQ(GlobalAddAtomA("FSASMLIB:IPC:1A4:1"), atom);
    for (int left : {2, 1}) {
        GlobalDeleteAtom(static_cast<std::uint16_t>(atom));
        EXPECT_EQ(AtomName(atom), "FSASMLIB:IPC:1A4:1") << left << " left";
    }
    GlobalDeleteAtom(static_cast<std::uint16_t>(atom));
    EXPECT_EQ(AtomName(atom), "");
    EXPECT_EQ(GetLastError(), ErrorInvalidHandle);
    EXPECT_EQ(AtomName(other), "FSASMLIB:IPC:1A4:2");
    GlobalDeleteAtom(static_cast<std::uint16_t>(other));
    EXPECT_EQ(GlobalAddAtomA(std::string(256, 'x').c_str()), 0) << "too long";
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_THAT(PassingFiles(runtime_), IsEmpty());

    auto message = static_cast<int>(RegisterWindowMessageA("FSASMLIB:IPC"));
    EXPECT_GE(message, 0xC000);
    EXPECT_EQ(Elsewhere([] { return RegisterWindowMessageA("fsasmlib:ipc"); }), message);
    EXPECT_NE(static_cast<int>(RegisterWindowMessageA("another")), message);
    RegisterWindowMessageA("FSASMLIB:IPC");
    EXPECT_EQ(OpenDescriptors(), before + 2) << "held once, however often it was asked for";
}

MappingHandle Create(const char* name, std::uint32_t sizeHigh = 0) {
    return CreateFileMappingA(InvalidFileHandle, nullptr, PageReadWrite, sizeHigh, 32768, name);
}

char* Map(MappingHandle mapping) {
    return static_cast<char*>(MapViewOfFile(mapping, FileMapWrite, 0, 0, 0));
}

// Counts in the last byte of the block, in another process. Adds 100 to the result if the block
// existed.
int CountElsewhere(const char* name) {
    return Elsewhere([name] {
        MappingHandle mapping = Create(name);
        int there = GetLastError() == ErrorAlreadyExists ? 100 : 0;
        return there + ++Map(mapping)[32767];
    });
}

TEST_F(LinuxLayer, AMappingIsSharedUntilItsLastHolderHasGone) {
    constexpr char Name[] = "FSASMLIB:IPC:1A4:1";
    EXPECT_EQ(OpenFileMappingA(FileMapWrite, false, Name), 0u);
    EXPECT_EQ(GetLastError(), ErrorFileNotFound);
    int before = OpenDescriptors();
    MappingHandle mapping = Create(Name);
    char* view = Map(mapping);
    EXPECT_EQ(CountElsewhere(Name), 101);
    EXPECT_EQ(view[32767], 1);
    EXPECT_EQ(ViewSize(view), 32768u);
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(CountElsewhere(Name), 102) << "the view holds it";
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_THAT(PassingFiles(runtime_), IsEmpty());
    EXPECT_EQ(CountElsewhere(Name), 1) << "new memory is zero";
    mapping = Create("../other");
    EXPECT_THAT(PassingFiles(runtime_), ElementsAre("mapping-%2E%2E%2Fother"))
        << "what died is swept";
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(Create("huge", 0x7FFFFFFF), 0u);
    EXPECT_THAT(PassingFiles(runtime_), IsEmpty());
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(LinuxLayer, OnlyAFolderPrivateToTheUserIsUsed) {
    fs::path elsewhere = root_ / "elsewhere";
    fs::create_directory(elsewhere);
    fs::permissions(elsewhere, fs::perms::owner_all);
    auto expectRefused = [this] {
        EXPECT_EQ(OwnWindow("Window", "", {}), 0u);
        EXPECT_THAT(LastErrorText(), AllOf(StartsWith(Folder().string()), HasSubstr("mode 700")));
        EXPECT_EQ(GlobalAddAtomA("atom"), 0);
        EXPECT_EQ(ClaimSingleInstance("Quirkmeter"), Failed);
    };
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
    fs::remove(Folder());
    Write(Folder(), "");
    expectRefused();

    setenv("XDG_RUNTIME_DIR", (root_ / "missing").c_str(), 1);
    setenv("TMPDIR", root_.c_str(), 1);
    EXPECT_NE(RegisterWindowMessageA("message"), 0u);
    fs::path fallback = root_ / ("quirkmeter-" + std::to_string(geteuid()));
    EXPECT_EQ(fs::status(fallback).permissions(), fs::perms::owner_all);
    setenv("TMPDIR", (root_ / "missing").c_str(), 1);
    EXPECT_EQ(ClaimSingleInstance("Quirkmeter"), Failed);
    EXPECT_THAT(LastErrorText(), HasSubstr("cannot be made"));
    unsetenv("TMPDIR");
}

constexpr std::int16_t Down = std::int16_t(0x8000);
constexpr std::int16_t DownAndPressed = std::int16_t(0x8001);

// All in one test, because a process can open its display only once.
TEST_F(LinuxLayer, KeysAreReadWithAnyFocusUntilTheDisplayIsLost) {
    unsetenv("DISPLAY");
    EXPECT_EQ(Elsewhere([] { return GetAsyncKeyState('S'); }), 0);
    Process server({"Xvfb", "-displayfd", "1", "-screen", "0", "64x64x8", "-nolisten", "tcp"});
    setenv("DISPLAY", (":" + server.Line()).c_str(), 1);
    Display* display = XOpenDisplay(nullptr);
    ASSERT_NE(display, nullptr) << "Xvfb did not start";
    // Another client has the keyboard focus.
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
    press(XK_Shift_R, true);
    EXPECT_EQ(GetAsyncKeyState(16), DownAndPressed) << "on either side";
    EXPECT_EQ(Process({"setxkbmap", "fr"}).ExitCode(), 0);
    constexpr unsigned FirstOfTheDigits = 10;  // on a French keyboard the digit takes SHIFT
    XTestFakeKeyEvent(display, FirstOfTheDigits, True, CurrentTime);
    XSync(display, False);
    EXPECT_EQ(GetAsyncKeyState('1'), DownAndPressed) << "on a French keyboard";

    server.Kill();
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetAsyncKeyState('S'), 0);
    EXPECT_EQ(GetAsyncKeyState('S'), 0);
    testing::internal::GetCapturedStderr();
}

TEST_F(LinuxLayer, ASoundReachesTheDeviceOrThereIsSilence) {
    constexpr std::size_t HeaderSize = 44;
    std::string samples = Content(SOUND_FILE).substr(HeaderSize);
    Write(root_ / "device.conf", "pcm.!default { type file slave.pcm { type null } file \"" +
                                     (root_ / "played").string() + "\" format raw }\n");
    Write(root_ / "none.conf", "\n");
    setenv("CANBERRA_DRIVER", "alsa", 1);
    auto play = [this](const char* configuration) {
        return [=, this] {
            fs::current_path(root_);
            setenv("ALSA_CONFIG_PATH", configuration, 1);
            dup2(open("complaints", O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
            Print(sndPlaySoundA(SOUND_FILE, SoundAsync));
        };
    };
    Process player(play("device.conf"));
    EXPECT_EQ(player.Number(), 1);
    EXPECT_TRUE(Becomes([&] { return Content(root_ / "played").ends_with(samples); }));
    EXPECT_EQ(Process(play("none.conf")).Number(), 0);
    EXPECT_EQ(Content(root_ / "complaints"), "");
}

// Writes how it was started to a file beside itself; the file appears complete.
constexpr char Reporter[] = R"(#!/bin/sh
report=$(/usr/bin/dirname "$0")/report
read -r pid name state parent group session rest </proc/$$/stat
[ "$session" = "$STARTER_SESSION" ] && set -- "$@" "its session"
[ -e /proc/$$/fd/400 ] && set -- "$@" "its descriptors"
printf "%s\n" "$@" "$PWD" >"$report.part"
/bin/mv "$report.part" "$report"
)";

TEST_F(LinuxLayer, ShellStartsAProgramOrOpensADocument) {
    fs::path folder = root_ / "folder";
    fs::path document = root_ / "a document.htm";
    fs::create_directory(folder);
    for (const fs::path& program : {folder / "program.exe", root_ / "xdg-open"}) {
        Write(program, Reporter);
        fs::permissions(program, fs::perms::owner_all);
    }
    Write(document, "<html>");
    setenv("STARTER_SESSION", std::to_string(getsid(0)).c_str(), 1);
    ASSERT_EQ(dup2(STDOUT_FILENO, 400), 400);
    auto execute = [](const fs::path& file, const char* parameters, const std::string& directory) {
        return ShellExecuteA(0, "Open", file.c_str(), parameters, directory.c_str(), ShowMinimized);
    };
    auto told = [](const fs::path& report) {
        EXPECT_TRUE(Becomes([&] { return fs::exists(report); }));
        return Content(report);
    };
    EXPECT_EQ(execute(folder / "program.exe", "report  0 $(id)", root_), 33);
    EXPECT_EQ(told(folder / "report"), "report\n0\n$(id)\n" + root_.string() + "\n");

    std::string path = getenv("PATH");
    // A document is executable on a file system without permissions.
    fs::permissions(document, fs::perms::owner_all);
    setenv("PATH", folder.c_str(), 1);
    EXPECT_EQ(execute(document, "0", "0"), 31) << "nothing to open it with";
    setenv("PATH", root_.c_str(), 1);
    EXPECT_EQ(execute(document, "0", "0"), 33);
    EXPECT_EQ(told(root_ / "report"), document.string() + "\n" + root_.string() + "\n");
    setenv("PATH", path.c_str(), 1);

    EXPECT_EQ(execute(root_ / "missing", "0", "0"), 2);
    Write(folder / "program.exe", "#!/no/such/interpreter\n");
    EXPECT_EQ(execute(folder / "program.exe", "0", "0"), 31);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left to wait for";
    close(400);
}

TEST_F(LinuxLayer, OnlyARegularFileIsRead) {
    Write(root_ / "file", "content");
    ASSERT_EQ(mkfifo((root_ / "pipe").c_str(), 0600), 0);
    for (const char* name : {"file", "pipe", "missing"})
        fs::create_symlink(name, root_ / ("link to " + std::string(name)));
    fs::create_symlink("/dev/zero", root_ / "link to device");
    for (const char* name : {"file", "link to file"})
        EXPECT_TRUE(OpenRegularFile(root_ / name)) << name;
    for (const char* name :
         {"pipe", "link to pipe", "missing", "link to missing", "link to device", ""})
        EXPECT_FALSE(OpenRegularFile(root_ / name)) << name;
    EXPECT_TRUE(FileExists(root_ / "pipe")) << "so it is no missing file";
}

TEST_F(LinuxLayer, APathWithControlCharactersIsRefused) {
    EXPECT_TRUE(HoldsPath(L"/home/Übung ☂/a=b, 100 %.qmp"));
    for (std::wstring path : {L"x\r\nHARDCOREMODE=YES.qmp", L"\n", L"\t.qmp", L"a\x7F"})
        EXPECT_FALSE(HoldsPath(path)) << testing::PrintToString(path);
}

// Replaces the file as an ordinary user who may write files up to 1000 bytes.
bool UserReplaces(const fs::path& path, const std::string& content) {
    pid_t user = fork();
    if (user == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{1000, 1000};
        // Enter the folder first: that user may not be able to pass the folders above it.
        fs::current_path(path.parent_path());
        bool ready = setrlimit(RLIMIT_FSIZE, &limit) == 0 && (geteuid() != 0 || setuid(65534) == 0);
        _exit(!ready || !ReplaceFile(path.filename(), content));
    }
    return ExitCode(user) == 0;
}

std::pair<uid_t, gid_t> OwnerOf(const fs::path& path) {
    struct stat status;
    stat(path.c_str(), &status);
    return {status.st_uid, status.st_gid};
}

TEST_F(LinuxLayer, AFileIsReplacedCompletelyOrNotAtAll) {
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
    fs::create_hard_link(file, root_ / "second name");
    EXPECT_TRUE(ReplaceFile(file, "both"));
    EXPECT_EQ(Content(root_ / "second name"), "both");
    fs::remove(root_ / "second name");
    if (geteuid() == 0) {
        ASSERT_EQ(chown(file.c_str(), 12345, 12346), 0);
        EXPECT_TRUE(ReplaceFile(file, "root's"));
        EXPECT_EQ(OwnerOf(file), std::pair(12345u, 12346u));
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0604));
        ASSERT_EQ(chown(file.c_str(), 0, 0), 0);
    }
    // One process id that cannot exist, and one of a process that runs.
    Write(root_ / ".quirkmeter-99999999-0.tmp", "killed while saving");
    Write(root_ / (".quirkmeter-" + std::to_string(getppid()) + "-0.tmp"), "still saving");
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
    EXPECT_EQ(std::ranges::distance(fs::directory_iterator(root_)), 6)
        << "of the temporary files that of the running process stays";
}

TEST_F(LinuxLayer, AFileIsWrittenInPlaceIfItsFolderTakesNoNewFile) {
    // A folder that takes no new file, one with the sticky bit, and an ordinary one.
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
        EXPECT_EQ(OwnerOf(folder / "file"), std::pair(geteuid(), getegid())) << folder;
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
    bool compiled = fs::exists(root_ / "xx_XX/LC_NUMERIC");  // false without the character maps
    setenv("LOCPATH", root_.c_str(), 1);
    unsetenv("LC_ALL");
    for (std::string locale : {"xx_XX", "no_SUCH"}) {
        setenv("LC_NUMERIC", locale.c_str(), 1);
        EXPECT_EQ(Elsewhere(DecimalSeparator), compiled && locale == "xx_XX" ? ',' : '.') << locale;
    }
}

}  // namespace

}  // namespace quirkmeter::platform
