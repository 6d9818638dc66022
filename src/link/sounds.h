// The program's three sounds.
#pragma once

#include <string_view>

namespace quirkmeter {

inline constexpr std::string_view SoundOk = "\\sound_ok.wav";
inline constexpr std::string_view SoundWarning = "\\sound_warning.wav";
inline constexpr std::string_view SoundFailure = "\\sound_failure.wav";

/// Plays a sound file of the program's folder and returns at once; a missing file is skipped.
void PlaySoundFile(std::string_view name);

}  // namespace quirkmeter
