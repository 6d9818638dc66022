// The simulator from hell: a flight with real processes, during which the simulator is killed,
// stopped, made to misbehave and started again as another one, a thousand times at random moments.
// Before that, processes that pass for the simulator and, as root, another user, who gets at
// nothing.
#include <fcntl.h>
#include <malloc.h>
#include <sys/file.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <random>

#include "child_process.h"
#include "engine/tick.h"
#include "link/actuation.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/failure_range.h"
#include "no_window.h"

using namespace quirkmeter;
namespace fs = std::filesystem;

namespace {

constexpr int Events = 1000;

std::mt19937 Chance;
const fs::path Home = MakeFolder();
int Flown = 0, Broken = 0, Lost = 0;

int Below(int end) {
    return static_cast<int>(Chance() % static_cast<unsigned>(end));
}

void Report(const std::string& what, long tried, int lost) {
    std::cout << "hell: " << what << '|' << tried << '|' << lost << std::endl;
    Lost += lost;
}

// Another simulator, a signal, a command or a spoiled block, and the milliseconds that it lasts.
struct Kind {
    std::string What;
    int Percent, Least, Most;
} Kinds[] = {
    {"simulator none", 30, 0, 1},   {"simulator old", 5, 0, 200},    {"stop", 30, 0, 100},
    {"stop", 2, 2000, 2500},        {"misbehave silent", 5, 0, 500}, {"misbehave late", 2, 0, 3000},
    {"misbehave wrong", 8, 0, 200}, {"misbehave drop", 8, 0, 500},   {"spoil", 10, 0, 1},
};

std::vector<std::string> Simulator(const std::string& misbehaviour) {
    std::string program = fs::read_symlink("/proc/self/exe").parent_path() / "practice-simulator";
    program += " --headless --takeoff-after 0 --misbehave " + misbehaviour;
    program += Below(2) ? " --class UIPCMAIN" : " --class FS98MAIN";
    return {"sh", "-c", "exec " + program + " >/dev/null"};
}

// Writes numbers into a batch, an answer, or while either is read; into the window's names as well.
void Spoil() {
    for (const std::string& name : PassingFiles(Home)) {
        std::fstream block(Home / "quirkmeter" / name, std::ios::in | std::ios::out);
        for (int i = 0; i < 2000; ++i) {
            int number = Below(2) ? Below(4) : static_cast<int>(Chance());
            block.seekp(Below(Below(2) ? 160 : 32768));
            block.write(reinterpret_cast<const char*>(&number), sizeof number).flush();
        }
    }
}

void Rage(int gap) {
    std::optional<Process> simulator(Simulator("none"));
    std::map<std::string, int> kinds;
    for (int event = 1; event <= Events; ++event) {
        std::this_thread::sleep_for(std::chrono::milliseconds(Below(gap)));
        Kind* kind = Kinds;
        for (int at = Below(100); at >= kind->Percent; ++kind) at -= kind->Percent;
        ++kinds[kind->What + " below " + std::to_string(kind->Most) + " ms"];
        if (kind->What.starts_with("simulator"))
            simulator.emplace(Simulator(kind->What.substr(10)));
        else if (kind->What == "stop")
            simulator->Signal(SIGSTOP);
        else if (kind->What == "spoil")
            Spoil();
        else
            simulator->Tell(kind->What);
        int lasting = kind->Least + Below(kind->Most - kind->Least);
        std::this_thread::sleep_for(std::chrono::milliseconds(lasting));
        simulator->Signal(SIGCONT);
        simulator->Tell("misbehave none");
        if (isatty(STDERR_FILENO)) std::cerr << "\rhell: event " << event << " of " << Events;
    }
    for (const auto& [what, count] : kinds) Report(what, count, false);
}

// Every failed sub-system has a row, in the order that it had before, and no row is left over.
bool Sound(const std::vector<FailureRow>& before) {
    bool sound = EngineState.Connected || FailureCount == 0;
    int rows = 0, failed = 0;
    for (const FailureRow& row : before)
        if (int now = FindFailure(row.System, row.SubSystem)) sound = sound && now == ++rows;
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        sound = sound && entry.Failed == (FindFailure(s, n) != 0);
        failed += entry.Failed;
    });
    return sound && failed == FailureCount &&
           std::count(FailureList + failed + 1, std::end(FailureList), FailureRow{}) ==
               FailureListRows - failed;
}

void Tick() {
    int system = 1 + Below(7);
    int subsystem = 1 + Below(SubsystemCount(system));
    int act = Below(100);
    if (act < 80 && !Catalogue[system][subsystem].Failed) AddFailure(system, subsystem);
    if (act >= 90) ClearFailure(system, subsystem);
    std::vector<FailureRow> before(FailureList + 1, FailureList + FailureCount + 1);
    alarm(120);  // what hangs for longer ends the driver
    EngineTick();
    bool flown = EngineState.StatusText.starts_with('O');  // on hold, or operational
    Broken += !Sound(before) || (flown && LastFailureCount != FailureCount);
    Flown += flown;
}

bool FliesWell() {
    Process simulator(Simulator("none"));
    return Becomes([end = Flown + 20] { return Tick(), Flown >= end; });
}

std::map<std::string, long> Held() {
    EngineTick();
    EngineTick();
    return {{"held files", std::ssize(PassingFiles(Home))},
            {"descriptors", std::ranges::distance(fs::directory_iterator("/proc/self/fd"))},
            {"KiB", static_cast<long>(mallinfo2().uordblks) / 1024}};
}

void Torture(int gap) {
    Process demon([gap] { Rage(gap), _exit(0); });
    for (siginfo_t end{}; end.si_pid == 0; Tick(), platform::Sleep(2))
        waitid(P_PID, static_cast<id_t>(demon.Pid()), &end, WEXITED | WNOHANG | WNOWAIT);
    for (std::string line; !(line = demon.Line()).empty();) std::cout << line << '\n';
    Report("events", Events, demon.ExitCode() != 0);
    Report("ticks answered", Flown, Broken + (Flown < Events / 20));
}

// Whether a message to that one in the simulator's place ends, whatever it does.
bool Survives(const platform::MessageHandler& answer) {
    Process impostor([&] {
        std::cout << platform::OwnWindow("UIPCMAIN", "", answer) << std::endl;
        for (;;) platform::ServeMessages(1000);
    });
    if (impostor.Number() <= 0) return false;
    Process program([] {
        alarm(14);
        std::uintptr_t reply = 0;
        auto window = platform::FindWindowExA(0, 0, "UIPCMAIN", nullptr);
        auto message = platform::RegisterWindowMessageA("FSASMLIB:IPC");
        platform::SendMessageTimeoutA(window, message, 0, 0, platform::SendBlock, 500, &reply);
        _exit(window == 0);
    });
    return program.ExitCode() == 0;
}

void MeetImpostors() {
    static std::string meeting = Home / "quirkmeter";
    platform::MessageHandler answers[] = {
        [](auto...) { return pause(); }, [](auto...) { return 0; }, [](auto...) { return 1; },
        [](auto...) { return raise(SIGKILL); },
        [](auto...) { return flock(open(meeting.c_str(), 0), LOCK_EX) + pause(); }};
    auto survivors = std::ranges::count_if(answers, Survives);
    Report("impostors", std::ssize(answers), static_cast<int>(std::ssize(answers) - survivors));

    if (geteuid() != 0) {
        std::cerr << "hell: what another user gets at is left out, for it takes root\n";
        return;
    }
    std::vector<std::string> files{"/proc/" + std::to_string(getpid()) + "/mem", meeting};
    for (const auto& file : fs::directory_iterator(meeting)) files.push_back(file.path());
    fs::permissions(Home, fs::perms(01777));
    auto opens = [](const std::string& file) { return open(file.c_str(), O_RDONLY) >= 0; };
    Process user([&] {
        bool there = std::ranges::count_if(files, opens) >= 4 && setuid(65534) == 0;
        _exit(!there || std::ranges::any_of(files, opens));
    });
    Report("files of ours for another user", std::ssize(files), user.ExitCode() != 0);
}

}  // namespace

int main(int, char** arguments) {
    Chance.seed(static_cast<unsigned>(std::stoul(arguments[1])));
    setenv("XDG_RUNTIME_DIR", Home.c_str(), 1);
    static torture::NoWindow window;
    TheMainWindow = &window;
    BuildCatalogue();
    ForEachSubsystem([](int, int, SubsystemEntry& entry) { entry.Reliability = "50"; });
    ComputeFailureRanges();
    MeetImpostors();
    Report("a flight before", 1, !FliesWell());
    auto before = Held();
    Torture(2000 * std::stoi(arguments[2]) / Events + 1);
    Report("a flight afterwards", 1, !FliesWell());
    for (const auto& [what, count] : Held())
        Report(what + ", before " + std::to_string(before[what]) + ", after", count,
               count > before[what] + (what == "KiB" ? 16 : 0));
    fs::remove_all(Home);
    return Lost != 0;
}
