#include "persist/settings_file.h"

#include <charconv>
#include <string>
#include <string_view>

#include "hardcore/companion.h"
#include "model/main_window.h"
#include "model/settings.h"
#include "persist/line_reader.h"
#include "platform/platform.h"

namespace quirkmeter {

namespace {

struct HotkeyKeys {
    std::string_view Key, ModsKey;
    Hotkey SettingsRecord::*Field;
};
constexpr HotkeyKeys HotkeyTable[] = {
    {"STATUS_HK=", "STATUS_HKCS=", &SettingsRecord::StatusHotkey},
    {"CLEAR_HK=", "CLEAR_HKCS=", &SettingsRecord::ClearHotkey},
    {"ACTIVE_HK=", "ACTIVE_HKCS=", &SettingsRecord::ActiveHotkey},
};

struct SwitchKey {
    std::string_view Key;
    bool SettingsRecord::*Field;
};
constexpr SwitchKey SwitchKeys[] = {
    {"DISPLAYUPDATE=", &SettingsRecord::DisplayUpdate},
    {"DISPLAYFAILURES=", &SettingsRecord::DisplayFailures},
    {"PLAYFAILURESOUND=", &SettingsRecord::PlayFailureSound},
};

constexpr std::string_view LastProfileKey = "LASTPROFILE=";
constexpr std::string_view HardcoreModeKey = "HARDCOREMODE=";
constexpr std::string_view On = "YES";

std::string SettingsPath() {
    return platform::ProgramFile("\\Quirkmeter.ini");
}

void Warn(const std::string& problem) {
    TheMainWindow->ShowMessage(problem + SettingsPath() + " file", MessageIcon::Warning);
}

// Retry: another program, such as a virus scanner, may have the file open for a moment.
LineReader OpenSettings() {
    constexpr int MaxRetries = 20;
    LineReader file(SettingsPath());
    for (int retries = 0; !file.Ok() && retries < MaxRetries; ++retries) {
        platform::Sleep(100);
        file = LineReader(SettingsPath());
    }
    return file;
}

void ReadWholeNumber(std::string_view text, std::int32_t& number) {
    std::int32_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc{} && end == text.data() + text.size()) number = value;
}

void ApplySetting(std::string_view key, std::string_view value) {
    if (key == LastProfileKey) Settings.LastProfile = value;
    for (const HotkeyKeys& keys : HotkeyTable) {
        Hotkey& hotkey = Settings.*keys.Field;
        if (key == keys.Key) ReadWholeNumber(value, hotkey.Key);
        if (key == keys.ModsKey) ReadWholeNumber(value, hotkey.Mods);
    }
    for (const SwitchKey& option : SwitchKeys)
        if (key == option.Key && value == On) Settings.*option.Field = true;
}

std::string SettingsText() {
    std::string text;
    auto addLine = [&text](std::string_view key, std::string_view value) {
        text.append(key).append(value).append("\r\n");
    };
    // A line break in the path would start another line.
    bool oneLine = Settings.LastProfile.find_first_of("\r\n") == std::string::npos;
    addLine(LastProfileKey, oneLine ? Settings.LastProfile : "");
    for (const HotkeyKeys& keys : HotkeyTable) {
        const Hotkey& hotkey = Settings.*keys.Field;
        if (hotkey.Key <= 0) continue;
        addLine(keys.Key, std::to_string(hotkey.Key));
        addLine(keys.ModsKey, std::to_string(hotkey.Mods));
    }
    for (const SwitchKey& option : SwitchKeys)
        if (Settings.*option.Field) addLine(option.Key, On);
    // Read this key last: it may end the program.
    if (Settings.HardcoreMode) addLine(HardcoreModeKey, On);
    return text;
}

}  // namespace

bool ReadSettings() {
    if (!platform::FileExists(SettingsPath())) return true;
    LineReader file = OpenSettings();
    std::string line;
    while (file.Next(line)) {
        std::size_t equals = line.find('=');
        if (equals == line.npos) continue;
        auto key = std::string_view(line).substr(0, equals + 1);
        auto value = std::string_view(line).substr(equals + 1);
        if (key == HardcoreModeKey && value == On) {
            Settings.HardcoreMode = true;
            Settings.HardcoreActive = true;
            if (!StartHardcoreCompanion()) return false;
        }
        ApplySetting(key, value);
    }
    Settings.Unread = !file.Ok();
    if (Settings.Unread) Warn("Could not read ");
    return true;
}

void WriteSettings() {
    if (Settings.Unread || !platform::ReplaceFile(SettingsPath(), SettingsText()))
        Warn("Could not write ");
}

}  // namespace quirkmeter
