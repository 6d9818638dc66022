// The user's options. They are read once at start-up, changed by the settings dialog and by opening
// and saving profiles, and written when the main window closes.
#pragma once

#include <cstdint>
#include <string>

namespace quirkmeter {

inline constexpr std::int32_t ModifierCtrl = 1;
inline constexpr std::int32_t ModifierShift = 2;

struct Hotkey {
    std::int32_t Key = 0;   // virtual-key code; 0: no hotkey
    std::int32_t Mods = 0;  // the sum of its modifiers; any value but 1, 2 and 3 means none

    bool WithCtrl() const { return Mods == 1 || Mods == 3; }
    bool WithShift() const { return Mods == 2 || Mods == 3; }
    bool operator==(const Hotkey&) const = default;
};

struct SettingsRecord {
    std::string LastProfile;        // full path; empty: none
    bool DisplayUpdate = false;     // status changes also show on the simulator's screen
    bool DisplayFailures = false;   // the status line counts and names the failures
    bool PlayFailureSound = false;  // a sound when the number of failures rises
    bool HardcoreMode = false;      // the choice, which the next start follows
    bool HardcoreActive = false;    // the mode is in force for this run; never saved
    bool Unread = false;            // there is a file that could not be read; never saved
    Hotkey StatusHotkey{};          // shows the status line
    Hotkey ClearHotkey{};           // clears the newest failure
    Hotkey ActiveHotkey{};          // suspends and resumes failure drawing

    bool operator==(const SettingsRecord&) const = default;
};

inline SettingsRecord Settings;

}  // namespace quirkmeter
