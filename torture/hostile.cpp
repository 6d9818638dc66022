// Another user, who gets at nothing, and processes that pass for the simulator: no crash, no hang.
#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <iostream>

#include "engine/tick.h"
#include "haste.h"
#include "process.h"
#include "rehearse/no_window.h"

using namespace quirkmeter;

namespace {

const std::filesystem::path Home = MakeFolder();
const std::string Meeting = Home / "quirkmeter";

bool Survives(const platform::MessageHandler& answer) {
    Process enemy([&] {
        std::cout << platform::OwnWindow("UIPCMAIN", "", answer) << std::endl;
        for (;;) platform::ServeMessages(1000);
    });
    Haste = enemy.Number() > 0 ? 20 : 1;  // a batch is given up after 4.4 seconds
    Process program([] { alarm(14), EngineTick(), EngineTick(), _exit(0); });
    return program.ExitCode() == 0;
}

}  // namespace

int main() {
    setenv("XDG_RUNTIME_DIR", Home.c_str(), 1);
    std::filesystem::permissions(Home, std::filesystem::perms(01777));
    static rehearse::NoWindow window;
    TheMainWindow = &window;
    int lost = 0;
    platform::MessageHandler answers[] = {
        [](auto...) { return pause(); }, [](auto...) { return 0; }, [](auto...) { return 1; },
        [](auto...) { return raise(SIGKILL); },
        [](auto...) { return flock(open(Meeting.c_str(), 0), LOCK_EX) + pause(); }};
    for (const platform::MessageHandler& answer : answers) lost += !Survives(answer);
    std::cout << "hostile: in the simulator's place|5|" << lost << std::endl;

    std::vector<std::string> files{"/proc/" + std::to_string(getpid()) + "/mem", Meeting};
    for (const auto& file : std::filesystem::directory_iterator(Meeting))
        files.push_back(file.path());
    auto opens = [](const std::string& file) { return open(file.c_str(), O_RDONLY) >= 0; };
    bool reached = Process([&] {
                       if (std::ranges::count_if(files, opens) < 4 || setuid(65534) != 0) _exit(1);
                       _exit(std::ranges::any_of(files, opens));
                   }).ExitCode() != 0;
    std::cout << "hostile: another user opens|" << files.size() << '|' << reached << std::endl;
    std::filesystem::remove_all(Home);
    return lost + reached;
}
