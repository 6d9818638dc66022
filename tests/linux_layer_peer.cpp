// The other process in the tests of the Linux layer: does what its first argument says, prints what
// came of it, then waits to be killed.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "platform/platform.h"

using namespace quirkmeter::platform;

namespace {

[[noreturn]] void WaitToBeKilled() {
    std::fflush(stdout);
    for (;;) pause();
}

std::intptr_t Answer(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) {
    if (lParam == -1) pause();
    if (lParam == -2) std::raise(SIGKILL);
    return static_cast<std::intptr_t>(message) + static_cast<std::intptr_t>(wParam) + lParam;
}

void Own(char** arguments) {
    std::printf("%zu\n", static_cast<std::size_t>(OwnWindow(arguments[0], arguments[1], Answer)));
    std::fflush(stdout);
    for (;;) ServeMessages(1000);
}

void Map(char** arguments) {
    const MappingHandle mapping =
        CreateFileMappingA(InvalidFileHandle, nullptr, PageReadWrite, 0, 32768, arguments[0]);
    std::printf("%u\n", GetLastError());
    auto* view = static_cast<char*>(MapViewOfFile(mapping, FileMapWrite, 0, 0, 0));
    std::printf("%d\n", view[32767]);
    view[32767] = 42;
    WaitToBeKilled();
}

void AddAtom(char** arguments) {
    std::uint16_t atom = 0;
    for (int times = std::stoi(arguments[1]); times > 0; --times)
        atom = GlobalAddAtomA(arguments[0]);
    std::printf("%u\n", atom);
}

void RegisterMessage(char** arguments) {
    std::printf("%u\n", RegisterWindowMessageA(arguments[0]));
}

void Claim(char**) {
    std::printf("%d\n", ClaimSingleInstance("Quirkmeter"));
    WaitToBeKilled();
}

// Is in the middle of something whenever it is killed.
void Churn(char**) {
    std::printf("churning\n");
    std::fflush(stdout);
    for (;;) {
        const std::uint16_t atom = GlobalAddAtomA("churned");
        const WindowHandle window = OwnWindow("Churned", "", Answer);
        const MappingHandle mapping =
            CreateFileMappingA(InvalidFileHandle, nullptr, PageReadWrite, 0, 4096, "churned");
        CloseHandle(mapping);
        DropWindow(window);
        GlobalDeleteAtom(atom);
    }
}

void Key(char**) {
    std::printf("%d\n", GetAsyncKeyState('S'));
}

void Play(char** arguments) {
    std::printf("%d\n", sndPlaySoundA(arguments[0], SoundAsync));
    std::printf("%d\n", sndPlaySoundA(arguments[0], SoundAsync));
    WaitToBeKilled();
}

void Separator(char**) {
    std::printf("%c\n", DecimalSeparator());
    WaitToBeKilled();
}

// Tells, in a file that appears with all of its content, how this process was started.
void Report(char** arguments) {
    const std::string path = arguments[0];
    const bool inherited = fcntl(3, F_GETFD) >= 0 || fcntl(400, F_GETFD) >= 0;
    std::ofstream file(path + ".part");
    for (char** argument = arguments; *argument; ++argument) file << *argument << '\n';
    file << std::filesystem::current_path().string() << '\n';
    file << getsid(0) << '\n';
    if (inherited) file << "inherited descriptors\n";
    file.close();
    std::filesystem::rename(path + ".part", path);
}

}  // namespace

int main(int, char** arguments) {
    const std::map<std::string, void (*)(char**)> tasks = {{"own", Own},
                                                           {"map", Map},
                                                           {"atom", AddAtom},
                                                           {"message", RegisterMessage},
                                                           {"claim", Claim},
                                                           {"churn", Churn},
                                                           {"key", Key},
                                                           {"play", Play},
                                                           {"separator", Separator},
                                                           {"report", Report}};
    // Under the name of the program that opens documents, it reports beside the document.
    if (FileName(arguments[0]) == "xdg-open") {
        std::string path = std::string(arguments[1]) + ".opened";
        char* report[] = {path.data(), nullptr};
        Report(report);
        return 0;
    }
    tasks.at(arguments[1])(arguments + 2);
}
