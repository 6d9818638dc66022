// The other process in the tests of the Linux layer: does what its first argument says, prints what
// came of it, then waits to be killed.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

#include "platform/platform.h"

using namespace quirkmeter::platform;

namespace {

void Print(auto value) {
    std::cout << value << std::endl;
}

std::intptr_t Answer(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) {
    if (lParam == -1) pause();
    if (lParam == -2) std::raise(SIGKILL);
    return static_cast<std::intptr_t>(message) + static_cast<std::intptr_t>(wParam) + lParam;
}

void Own(char** arguments) {
    Print(OwnWindow(arguments[0], arguments[1], Answer));
    for (;;) ServeMessages(1000);
}

void Map(char** arguments) {
    MappingHandle mapping =
        CreateFileMappingA(InvalidFileHandle, nullptr, PageReadWrite, 0, 32768, arguments[0]);
    Print(GetLastError());
    auto* view = static_cast<char*>(MapViewOfFile(mapping, FileMapWrite, 0, 0, 0));
    Print(int{view[32767]});
    view[32767] = 42;
}

// Tells, in a file that appears with all of its content, how this process was started.
void Report(const std::string& path, char** arguments) {
    bool inherited = fcntl(3, F_GETFD) >= 0 || fcntl(400, F_GETFD) >= 0;
    std::ofstream file(path + ".part");
    for (; *arguments; ++arguments) file << *arguments << '\n';
    file << std::filesystem::current_path().string() << '\n';
    file << (std::to_string(getsid(0)) == getenv("STARTER_SESSION") ? "its session\n" : "");
    file << (inherited ? "inherited descriptors\n" : "");
    file.close();
    std::filesystem::rename(path + ".part", path);
}

}  // namespace

int main(int, char** arguments) {
    // Under the name of the program that opens documents, it reports beside the document.
    std::string task = arguments[1];
    if (FileName(arguments[0]) == "xdg-open") return Report(task + ".opened", arguments + 1), 0;
    if (task == "report") return Report(arguments[2], arguments + 3), 0;

    const std::map<std::string, void (*)(char**)> tasks = {
        {"own", Own},
        {"map", Map},
        {"atom", [](char** names) { Print(GlobalAddAtomA(names[0])); }},
        {"message", [](char** names) { Print(RegisterWindowMessageA(names[0])); }},
        {"claim", [](char**) { Print(ClaimSingleInstance("Quirkmeter")); }},
        {"key", [](char**) { Print(GetAsyncKeyState('S')); }},
        {"play", [](char** files) { Print(sndPlaySoundA(files[0], SoundAsync)); }},
        {"separator", [](char**) { Print(DecimalSeparator()); }},
    };
    tasks.at(task)(arguments + 2);
    for (;;) pause();
}
