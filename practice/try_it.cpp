// try-it: a first flight by one double-click. Starts the practice simulator and Quirkmeter. If
// there are no settings yet, writes some with everything switched on.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace {

using namespace quirkmeter;

// CTRL+SHIFT with S, C and D.
constexpr char Settings[] =
    "STATUS_HK=83\r\nSTATUS_HKCS=3\r\n"
    "CLEAR_HK=67\r\nCLEAR_HKCS=3\r\n"
    "ACTIVE_HK=68\r\nACTIVE_HKCS=3\r\n"
    "DISPLAYUPDATE=YES\r\nDISPLAYFAILURES=YES\r\nPLAYFAILURESOUND=YES\r\n";

// Leaves existing settings unchanged.
bool WriteSettings() {
    std::string file = platform::ProgramFile("\\Quirkmeter.ini");
    if (platform::FileExists(file)) return true;
    return platform::ReplaceFile(
        file, "LASTPROFILE=" + platform::ProgramFile("\\practice.qmp") + "\r\n" + Settings);
}

bool Start(const char* program) {
    std::string file = platform::ProgramFile(program);
    bool started =
        platform::ShellExecuteA(0, "Open", file.c_str(), "", "", platform::ShowNormal) > 32;
    if (!started) std::fprintf(stderr, "try-it: cannot start %s\n", file.c_str());
    return started;
}

bool SimulatorRuns() {
    return platform::FindWindowA("UIPCMAIN", nullptr) != 0 ||
           platform::FindWindowA("FS98MAIN", nullptr) != 0;
}

// After ten seconds without a simulator Quirkmeter starts nevertheless and keeps trying to connect.
bool StartSimulator() {
    if (SimulatorRuns()) return true;
    if (!Start("\\" PRACTICE_PROGRAM)) return false;
    for (int tries = 0; tries < 100 && !SimulatorRuns(); ++tries) platform::Sleep(100);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    bool settingsOnly = argc == 2 && std::string_view(argv[1]) == "--settings";
    if (argc > 1 && !settingsOnly) {
        std::fputs(
            "usage: try-it [--settings]\n"
            "  --settings  only write the settings of a first flight, if there are none\n",
            stderr);
        return 2;
    }
    if (!WriteSettings()) {
        std::fputs("try-it: cannot write Quirkmeter.ini beside the programs\n", stderr);
        if (settingsOnly) return EXIT_FAILURE;
    }
    if (settingsOnly) return EXIT_SUCCESS;
    return StartSimulator() && Start("\\" QUIRKMETER_PROGRAM) ? EXIT_SUCCESS : EXIT_FAILURE;
}
