#include "link/sounds.h"

#include "platform/platform.h"

namespace quirkmeter {

void PlaySoundFile(std::string_view name) {
    std::string path = platform::ProgramFile(name);
    if (!platform::FileExists(path)) return;
    platform::sndPlaySoundA(path.c_str(), platform::SoundAsync);
}

}  // namespace quirkmeter
