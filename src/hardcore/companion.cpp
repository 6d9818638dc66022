#include "hardcore/companion.h"

#include "link/actuation.h"
#include "model/engine_state.h"
#include "model/main_window.h"
#include "platform/platform.h"

namespace quirkmeter {

namespace {

bool CompanionIsThere() {
    return platform::FindWindowA("ThunderRT6FormDC", "FSQMHC") != 0;
}

}  // namespace

bool StartHardcoreCompanion() {
    if (CompanionIsThere()) return true;
    std::string companion = platform::ProgramFile("\\fsqmhc.exe");
    auto result = platform::ShellExecuteA(TheMainWindow->Handle(), "Open", companion.c_str(), "0",
                                          "0", platform::ShowMinimized);
    if (result <= 32)
        TheMainWindow->ShowMessage("Problem starting FSQM Hardcore Mode process (1).",
                                   MessageIcon::None);
    return false;
}

bool CheckHardcoreCompanion() {
    // A failed search does not mean that the window is gone.
    if (CompanionIsThere() || platform::GetLastError() != platform::ErrorSuccess) return true;
    TheMainWindow->Unload();
    return false;
}

void LeaveFlight() {
    if (!HardcoreLock()) return;
    for (int run = 1; run <= 3; ++run) {
        ZeroAircraftPosition();
        if (run < 3) platform::Sleep(1000);
    }
}

}  // namespace quirkmeter
