// The programs as their users run them: real processes on a display, in folders of their own.
//
// The tests observe Quirkmeter through the lines that the practice simulator prints, one for each
// write. Status lines on the simulator's screen are such writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <stdexcept>
#include <system_error>

#include "child_process.h"

namespace quirkmeter {

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Ge;
using testing::IsEmpty;
using testing::Lt;

constexpr char Program[] = "Quirkmeter";
constexpr char Companion[] = "fsqmhc.exe";
constexpr char Simulator[] = "practice-simulator";
constexpr char TryIt[] = "try-it";
const std::string ProgramTitle = "FS2002 Quirkmeter";

// The environment of one test: a program folder, a runtime folder and a simulator. Ends every
// process started in it. A wait without success throws.
class Cockpit {
   public:
    Cockpit() {
        // Copy in another process: a thread that forks here would inherit the copy's open
        // descriptor, and a file that is open for writing cannot be executed.
        Process copy(
            {"cp", Built(Program), Built(Companion), Built(Simulator), Built(TryIt), folder_});
        EXPECT_EQ(copy.ExitCode(), 0);
    }
    ~Cockpit() {
        started_.clear();
        // End the companion first, because it restarts the program.
        for (const char* program : {Companion, Program, Simulator}) {
            for (pid_t process : Running(program)) {
                kill(process, SIGKILL);
                ExitCode(process);
            }
        }
        simulator_.reset();
        fs::remove_all(folder_);
    }
    Cockpit(const Cockpit&) = delete;

    fs::path File(const char* name) const { return folder_ / name; }
    fs::path Settings() const { return File("Quirkmeter.ini"); }

    // A separate display for the programs started afterwards.
    void StartDisplay() {
        display_.emplace(std::vector<std::string>{"Xvfb", "-noreset", "-displayfd", "1"});
        displayName_ = ":" + display_->Line();
    }
    void EndDisplay() { display_.reset(); }

    Process& Start(const char* program) { return started_.emplace_back(Here({File(program)})); }

    // The processes that run a program of this cockpit, also those started by another program.
    std::vector<pid_t> Running(const char* program) const {
        std::vector<pid_t> found;
        for (const auto& process : fs::directory_iterator("/proc")) {
            std::error_code gone;
            if (fs::read_symlink(process.path() / "exe", gone) == File(program))
                found.push_back(std::stoi(process.path().filename()));
        }
        return found;
    }
    pid_t TheOne(const char* program) const {
        std::vector<pid_t> processes = Running(program);
        if (processes.size() == 1) return processes[0];
        throw std::runtime_error(std::to_string(processes.size()) + " of " + program + " run");
    }

    Process& StartSimulator(std::vector<std::string> options = {"--headless"},
                            const char* takeOffAfter = "1000000") {
        options.insert(options.begin(), Built(Simulator));
        options.insert(options.end(), {"--log", "--takeoff-after", takeOffAfter});
        simulator_.emplace(Here(options));
        Await("# ready");
        return *simulator_;
    }
    void Tell(const std::string& command) { simulator_->Tell(command); }

    // Reads the simulator's output until it has printed the text in that many more lines.
    void Await(const std::string& text, std::size_t count = 1) {
        std::size_t from = lines_.size();
        auto end = Clock::now() + Patience;
        while (Heard(text, from).size() < count) {
            std::string line = simulator_->Line();
            if (line.empty() || Clock::now() > end) throw std::runtime_error(DidNotCome(text));
            lines_.push_back(line);
        }
    }

    // The lines with that text, from line number `from` on.
    std::vector<std::string> Heard(const std::string& text, std::size_t from = 0) const {
        std::vector<std::string> found;
        for (std::size_t i = from; i < lines_.size(); ++i)
            if (lines_[i].find(text) != std::string::npos) found.push_back(lines_[i]);
        return found;
    }

    // Ends the simulator and reads the rest of its output.
    void EndSimulator() {
        Tell("quit");
        Await("# quit");
        EXPECT_EQ(simulator_->ExitCode(), 0);
    }

   private:
    static fs::path Built(const char* program) {
        return fs::read_symlink("/proc/self/exe").parent_path() / program;
    }

    std::vector<std::string> Here(std::vector<std::string> command) const {
        std::string environment[] = {"env", "XDG_RUNTIME_DIR=" + folder_.string(),
                                     "HOME=" + folder_.string(), "LC_ALL=C.UTF-8",
                                     "CANBERRA_DRIVER=null", "GDK_BACKEND=x11", "NO_AT_BRIDGE=1",
                                     "GSETTINGS_BACKEND=memory", "DISPLAY=" + displayName_,
                                     // wxWidgets leaks some memory at its end.
                                     "ASAN_OPTIONS=detect_leaks=0"};
        command.insert(command.begin(), std::begin(environment), std::end(environment));
        return command;
    }

    std::string DidNotCome(const std::string& text) const {
        std::string message = text + " did not come after\n";
        for (const std::string& line : Heard("")) message += line + '\n';
        return message;
    }

    fs::path folder_ = MakeFolder();
    std::optional<Process> display_;
    std::string displayName_ = std::getenv("DISPLAY");
    std::deque<Process> started_;
    std::optional<Process> simulator_;
    std::vector<std::string> lines_;
};

double Seconds(const std::string& line) {
    return std::stod(line);
}

// Waits until that many windows of the program with that title are visible, and returns them.
std::vector<std::string> Windows(pid_t program, const std::string& title, std::size_t count) {
    std::vector<std::string> found;
    auto search = [&] {
        Process xdotool({"xdotool", "search", "--all", "--onlyvisible", "--pid",
                         std::to_string(program), "--name", "^" + title + "$"});
        found.clear();
        for (std::string line; !(line = xdotool.Line()).empty();) found.push_back(line);
        return found.size() == count;
    };
    if (!Becomes(search)) throw std::runtime_error(title + " did not come");
    return found;
}

// The number of colours in a window. A window that is not painted yet has one.
int Colours(const std::string& window) {
    Process import({"import", "-window", window, "-format", "%k", "info:"});
    return std::atoi(import.Line().c_str());
}

void Press(const std::string& window, const std::string& key) {
    Process xdotool({"xdotool", "windowactivate", "--sync", window, "key", key});
    EXPECT_EQ(xdotool.ExitCode(), 0) << key;
}

// --- Flights -----------------------------------------------------------------------------------

void FlyUntilSystemsFail() {
    Cockpit cockpit;
    Write(cockpit.File("a=b.qmp"), "1#10#0#0\r\n6#7#0#0\r\n");
    Write(cockpit.Settings(), "LASTPROFILE=" + cockpit.File("a=b.qmp").string() +
                                  "\r\nDISPLAYUPDATE=YES\r\nDISPLAYFAILURES=YES\r\n");
    cockpit.StartSimulator({"--headless"}, "7");
    cockpit.Start(Program);
    cockpit.Await("0x3380 128 \"QM:  Operational.  No failures.\"");
    cockpit.Await("0x07BC 4 0 Master (autopilot switch)", 3);  // the last write of a tick
    // The failure is drawn at the tenth tick in the air and written in every tick since.
    auto flags = cockpit.Heard("0x0B71 1 1 Pitot Static (failure flag)");
    EXPECT_EQ(flags.size(), 3u);
    double tookOff = Seconds(cockpit.Heard("# took off").at(0));
    EXPECT_NEAR(tookOff, 7, 0.13) << "by itself";
    EXPECT_THAT(Seconds(flags.at(0)) - tookOff, AllOf(Ge(9), Lt(60)));
}

enum class Leave { OnGroundBySignal, InAirWithoutCompanion, InAirWithoutDisplay };

// The user starts the program once: it starts the companion and ends, and the companion starts it
// again. Then the test ends the program, the companion or their display, and the others must
// follow.
void LeaveHardcoreMode(Leave how) {
    bool airborne = how != Leave::OnGroundBySignal;
    std::string settings = "DISPLAYUPDATE=YES\r\nHARDCOREMODE=YES\r\n";
    std::string onHold = "\"QM:  On hold (not airborne). Hardcore Mode.\"";
    Cockpit cockpit;
    Write(cockpit.Settings(), settings);
    if (how == Leave::InAirWithoutDisplay) cockpit.StartDisplay();
    cockpit.StartSimulator();
    EXPECT_EQ(cockpit.Start(Program).ExitCode(), 0);
    cockpit.Await(onHold);
    EXPECT_EQ(Content(cockpit.Settings()), settings);
    // In these two ticks the companion sees the program run.
    cockpit.Tell("pause");
    cockpit.Await("\"QM:  On hold (sim paused)(not airborne). Hardcore Mode.\"");
    cockpit.Tell("resume");
    cockpit.Await(onHold);
    if (airborne) {
        cockpit.Tell("takeoff");
        cockpit.Await("\"QM:  Operational. Hardcore Mode.\"");
    }
    pid_t program = cockpit.TheOne(Program);
    pid_t companion = cockpit.TheOne(Companion);
    int programCode = 0;
    int companionCode = 0;
    if (how == Leave::OnGroundBySignal) {
        kill(program, SIGTERM);
    } else if (how == Leave::InAirWithoutCompanion) {
        kill(companion, SIGKILL);
        companionCode = -SIGKILL;
    } else {
        cockpit.EndDisplay();
        programCode = companionCode = 1;
    }
    EXPECT_EQ(ExitCode(program), programCode);
    EXPECT_EQ(ExitCode(companion), companionCode);
    EXPECT_EQ(Content(cockpit.Settings()), "LASTPROFILE=\r\n" + settings);
    cockpit.EndSimulator();
    EXPECT_THAT(cockpit.Running(Program), IsEmpty());
    auto moves = cockpit.Heard("0x0574 4 0 Altitude, high half");
    EXPECT_EQ(moves.size(), airborne ? 3u : 0u) << "on the ground the aircraft stays where it is";
    for (std::size_t i = 1; i < moves.size(); ++i)
        EXPECT_GE(Seconds(moves[i]) - Seconds(moves[i - 1]), 0.99);
}

// The flights run in parallel, because each one mostly waits.
TEST(Flight, ConnectsFailsSystemsAndEnds) {
    std::function<void()> all[] = {FlyUntilSystemsFail,
                                   [] { LeaveHardcoreMode(Leave::OnGroundBySignal); },
                                   [] { LeaveHardcoreMode(Leave::InAirWithoutCompanion); },
                                   [] { LeaveHardcoreMode(Leave::InAirWithoutDisplay); }};
    std::vector<std::jthread> flights;
    for (const auto& fly : all) {
        flights.emplace_back([&fly] {
            try {
                fly();
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
        });
    }
}

// --- Starting and ending -----------------------------------------------------------------------

void ExpectEnd(Process& program, int signal, const std::string& where) {
    auto asked = Clock::now();
    program.Signal(signal);
    EXPECT_EQ(program.ExitCode(), 0) << where;
    EXPECT_LT(Clock::now() - asked, std::chrono::seconds(2)) << where;
}

TEST(Keyboard, EverySignalEndsTheProgramWhateverIsOpen) {
    struct {
        const char *Key, *Title;
        int Signal;
        bool Writable;  // else a message follows the signal
    } dialogs[] = {{"alt+p", "Help", SIGTERM, true},
                   {"alt+s", "Save As", SIGINT, false},
                   {"alt+F4", "FS2002 Quirkmeter", SIGHUP, false}};
    for (const auto& [key, title, signal, writable] : dialogs) {
        Cockpit cockpit;
        Process& program = cockpit.Start(Program);
        std::string main = Windows(program.Pid(), ProgramTitle, 1)[0];
        if (!writable) fs::create_directory(cockpit.Settings());
        Press(main, key);
        Windows(program.Pid(), title, title == ProgramTitle ? 2 : 1);
        ExpectEnd(program, signal, title);
    }
}

TEST(Keyboard, ASignalEndsTheProgramDuringStartUpAndBesideAStoppedSimulator) {
    Cockpit cockpit;
    Write(cockpit.Settings(), "LASTPROFILE=missing.qmp\r\nSTATUS_HK=83\r\n");
    Process& unshown = cockpit.Start(Program);
    Windows(unshown.Pid(), ProgramTitle, 1);
    ExpectEnd(unshown, SIGTERM, "a profile that cannot be read");
    EXPECT_EQ(Content(cockpit.Settings()), "LASTPROFILE=\r\nSTATUS_HK=83\r\nSTATUS_HKCS=0\r\n");

    cockpit.StartSimulator().Signal(SIGSTOP);
    Process& waiting = cockpit.Start(Program);
    std::string window = Windows(waiting.Pid(), ProgramTitle, 1)[0];
    EXPECT_TRUE(Becomes([&] { return Colours(window) > 1; }));
    ExpectEnd(waiting, SIGTERM, "a simulator that was stopped");
}

TEST(Keyboard, AProgramThatCannotStartSaysWhy) {
    Cockpit cockpit;
    Write(cockpit.File("quirkmeter"), "no folder to meet in");
    std::pair<const char*, const char*> titles[] = {{Program, ProgramTitle.c_str()},
                                                    {Simulator, "Practice Simulator"}};
    for (auto [program, title] : titles) {
        Process& process = cockpit.Start(program);
        Press(Windows(process.Pid(), title, 1)[0], "Return");
        EXPECT_EQ(process.ExitCode(), 1) << program;
    }
    EXPECT_EQ(cockpit.Start(Companion).ExitCode(), 1) << "it has no user to tell";

    fs::remove(cockpit.File("quirkmeter"));
    cockpit.StartSimulator();
    Process& second = cockpit.Start(Simulator);
    Press(Windows(second.Pid(), "Practice Simulator", 1)[0], "Return");
    EXPECT_EQ(second.ExitCode(), 1) << "a second simulator";
}

TEST(Keyboard, TheMainWindowGetsTheFocusBackAfterSettings) {
    Cockpit cockpit;
    auto awaitActive = [](const std::string& title) {
        auto isActive = [&title] {
            Process active({"xdotool", "getactivewindow", "getwindowname"});
            return active.Line() == title;
        };
        if (!Becomes(isActive)) throw std::runtime_error(title + " has not got the keyboard");
    };
    // Do not activate a window here: the window manager would give the focus to it later.
    auto press = [](const char* key) { Process({"xdotool", "key", key}).ExitCode(); };
    cockpit.StartSimulator({});
    awaitActive("Practice Simulator");
    cockpit.Start(Program);
    awaitActive(ProgramTitle);
    for (int i = 0; i < 3; ++i) {
        press("alt+p");
        awaitActive("Help");
        press("alt+s");
        awaitActive("Settings");
        press("alt+o");
        awaitActive(ProgramTitle);
    }
}

TEST(Keyboard, TryItSwitchesEverythingOnUnlessThereAreSettings) {
    Cockpit cockpit;
    std::string profile = cockpit.File("practice.qmp").string();
    Write(profile, "1#1#90#1\r\n");
    std::string everythingOn =
        "LASTPROFILE=" + profile +
        "\r\nSTATUS_HK=83\r\nSTATUS_HKCS=3\r\nCLEAR_HK=67\r\nCLEAR_HKCS=3\r\n"
        "ACTIVE_HK=68\r\nACTIVE_HKCS=3\r\nDISPLAYUPDATE=YES\r\n"
        "DISPLAYFAILURES=YES\r\nPLAYFAILURESOUND=YES\r\n";
    EXPECT_EQ(cockpit.Start(TryIt).ExitCode(), 0);
    EXPECT_EQ(Content(cockpit.Settings()), everythingOn);
    Windows(cockpit.TheOne(Simulator), "Practice Simulator", 1);
    Windows(cockpit.TheOne(Program), ProgramTitle, 1);

    Cockpit pilots;
    Write(pilots.Settings(), "DISPLAYUPDATE=YES\r\n");
    EXPECT_EQ(pilots.Start(TryIt).ExitCode(), 0);
    EXPECT_EQ(Content(pilots.Settings()), "DISPLAYUPDATE=YES\r\n");
}

TEST(Keyboard, TheCompanionEndsWhenItIsClosedOnTheTaskBar) {
    Cockpit cockpit;
    Windows(cockpit.Start(Program).Pid(), ProgramTitle, 1);
    Process& companion = cockpit.Start(Companion);
    EXPECT_TRUE(Becomes([] {
        Process xdotool({"xdotool", "search", "--name", "^FSQMHC$", "windowactivate", "--sync",
                         "key", "alt+F4"});
        return xdotool.ExitCode() == 0;
    }));
    EXPECT_EQ(companion.ExitCode(), 0);
}

}  // namespace

}  // namespace quirkmeter

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Adopt the processes that a child leaves behind.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    return RUN_ALL_TESTS();
}
