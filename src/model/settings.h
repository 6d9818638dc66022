// The user's options. They are read once at start-up, changed by the settings dialog and by opening
// and saving profiles, and written when the main window closes.
#pragma once

#include <cstdint>
#include <string>

namespace quirkmeter {

/// Modifier keys of a hotkey; both together are their sum. Any value but 1, 2 and 3 means none.
inline constexpr std::int32_t ModifierCtrl = 1;
inline constexpr std::int32_t ModifierShift = 2;

inline bool WithCtrl(std::int32_t mods) {
    return mods == 1 || mods == 3;
}
inline bool WithShift(std::int32_t mods) {
    return mods == 2 || mods == 3;
}

struct SettingsRecord {
    std::string LastProfile;        // full path; empty: none
    bool DisplayUpdate = false;     // status changes also show on the simulator's screen
    bool DisplayFailures = false;   // the status line counts and names the failures
    bool PlayFailureSound = false;  // a sound when the number of failures rises
    bool HardcoreMode = false;      // the choice, which the next start follows
    bool HardcoreActive = false;    // the mode is in force for this run; never saved
    bool Unread = false;            // there is a file that could not be read; never saved
    // Virtual-key codes (0: no hotkey) and their modifiers.
    std::int32_t StatusHotkey = 0;
    std::int32_t StatusHotkeyMods = 0;
    std::int32_t ClearHotkey = 0;
    std::int32_t ClearHotkeyMods = 0;
    std::int32_t ActiveHotkey = 0;
    std::int32_t ActiveHotkeyMods = 0;

    bool operator==(const SettingsRecord&) const = default;
};

inline SettingsRecord Settings;

}  // namespace quirkmeter
