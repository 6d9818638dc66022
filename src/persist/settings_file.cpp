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

struct NumberKey {
    std::string_view Key;
    std::int32_t SettingsRecord::*Field;
};
constexpr NumberKey NumberKeys[] = {
    {"STATUS_HK=", &SettingsRecord::StatusHotkey},
    {"STATUS_HKCS=", &SettingsRecord::StatusHotkeyMods},
    {"CLEAR_HK=", &SettingsRecord::ClearHotkey},
    {"CLEAR_HKCS=", &SettingsRecord::ClearHotkeyMods},
    {"ACTIVE_HK=", &SettingsRecord::ActiveHotkey},
    {"ACTIVE_HKCS=", &SettingsRecord::ActiveHotkeyMods},
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

void ReadWholeNumber(std::string_view text, std::int32_t& number) {
    std::int32_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc{} && end == text.data() + text.size()) number = value;
}

void ApplySetting(std::string_view key, std::string_view value) {
    if (key == LastProfileKey) Settings.LastProfile = value;
    for (const NumberKey& number : NumberKeys)
        if (key == number.Key) ReadWholeNumber(value, Settings.*number.Field);
    for (const SwitchKey& option : SwitchKeys)
        if (key == option.Key && value == On) Settings.*option.Field = true;
}

std::string SettingsText() {
    std::string text;
    auto addLine = [&text](std::string_view key, std::string_view value) {
        text.append(key).append(value).append("\r\n");
    };
    auto addHotkey = [&addLine](const NumberKey& key, const NumberKey& mods) {
        if (Settings.*key.Field <= 0) return;
        addLine(key.Key, std::to_string(Settings.*key.Field));
        addLine(mods.Key, std::to_string(Settings.*mods.Field));
    };
    addLine(LastProfileKey, Settings.LastProfile);
    addHotkey(NumberKeys[0], NumberKeys[1]);
    addHotkey(NumberKeys[2], NumberKeys[3]);
    addHotkey(NumberKeys[4], NumberKeys[5]);
    for (const SwitchKey& option : SwitchKeys)
        if (Settings.*option.Field) addLine(option.Key, On);
    // Last, since reading it may end the program before the lines behind it.
    if (Settings.HardcoreMode) addLine(HardcoreModeKey, On);
    return text;
}

}  // namespace

bool ReadSettings() {
    LineReader file(SettingsPath());
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
    return true;
}

void WriteSettings() {
    if (!platform::ReplaceFile(SettingsPath(), SettingsText()))
        TheMainWindow->ShowMessage("Could not write " + SettingsPath() + " file",
                                   MessageIcon::Warning);
}

}  // namespace quirkmeter
