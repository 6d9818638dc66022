#include "link/sounds.h"

#include "model/engine_state.h"
#include "platform/platform.h"

namespace quirkmeter {

void PlaySoundFile(std::string_view name) {
    std::string path = platform::ProgramFile(name);
    if (!platform::FileExists(path)) return;
    platform::sndPlaySoundA(path.c_str(), platform::SoundAsync);
}

void ToggleActive() {
    if (HardcoreLock()) return;
    EngineState.Deactivated = !EngineState.Deactivated;
    PlaySoundFile(EngineState.Deactivated ? SoundWarning : SoundOk);
}

}  // namespace quirkmeter
