#include "persist/profile.h"

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "model/failure_range.h"
#include "model/main_window.h"
#include "model/number_text.h"
#include "model/settings.h"
#include "persist/line_reader.h"
#include "platform/platform.h"

namespace quirkmeter {

namespace {

constexpr float MaxReliability = 100;
constexpr float MaxHours = 999;

constexpr char NotAProfileLine[] = "is not a line of a profile";
constexpr const char* FieldFaults[] = {
    "has a system that is not a number", "has a sub-system that is not a number",
    "has a reliability that is not a number", "has hours that are not a number"};

struct ProfileLine {
    double System, Subsystem;
    float Reliability, Hours;
};

// Returns the fault of the line; null for a good one.
using LineFault = const char*;

LineFault ParseLine(std::string_view line, ProfileLine& parsed) {
    std::array<double, 4> fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        std::size_t end = i < 3 ? line.find('#') : line.size();
        if (end == line.npos) return NotAProfileLine;
        auto number = ReadNumber(line.substr(0, end));
        if (!number) return FieldFaults[i];
        fields[i] = *number;
        if (i < 3) line.remove_prefix(end + 1);
    }
    // A whole number is rounded from any number, a half to the even neighbour.
    parsed = {std::nearbyint(fields[0]), std::nearbyint(fields[1]), static_cast<float>(fields[2]),
              static_cast<float>(fields[3])};
    return nullptr;
}

bool InRange(float value, float max) {
    return value >= 0 && value <= max;
}

// The values that a profile sets for a sub-system. The last of several lines counts, and only its
// numbers are turned into texts.
struct Setting {
    std::optional<float> Reliability, Hours;
};
using SettingTable = Setting[SystemSlots + 1][SubsystemSlots + 1];

LineFault TakeLine(std::string_view text, SettingTable& settings) {
    ProfileLine line{};
    if (LineFault fault = ParseLine(text, line)) return fault;
    bool useReliability = InRange(line.Reliability, MaxReliability);
    bool useHours = InRange(line.Hours, MaxHours);
    if (!useReliability && !useHours) return nullptr;
    if (line.System < 1 || line.System > SystemSlots) return "names no system of the aircraft";
    if (line.Subsystem < 1 || line.Subsystem > SubsystemSlots)
        return "names no sub-system of the aircraft";
    Setting& setting = settings[static_cast<int>(line.System)][static_cast<int>(line.Subsystem)];
    if (useReliability) setting.Reliability = line.Reliability;
    if (useHours) setting.Hours = line.Hours;
    return nullptr;
}

std::optional<ProfileFault> TakeLines(LineReader& file, SettingTable& settings) {
    std::string text;
    for (int line = 1; file.Next(text); ++line)
        if (LineFault fault = TakeLine(text, settings)) return ProfileFault{line, fault};
    if (!file.Ok()) return ProfileFault{0, "cannot be read"};
    return std::nullopt;
}

void ShowProfileName() {
    TheMainWindow->SetSubSystemsHeading("Sub-systems (" + platform::FileName(Settings.LastProfile) +
                                        ")");
}

}  // namespace

std::optional<ProfileFault> ApplyProfile(const std::string& path) {
    LineReader file(path);
    SettingTable settings;
    std::optional<ProfileFault> fault = TakeLines(file, settings);
    for (int s = 1; s <= SystemSlots; ++s)
        for (int n = 1; n <= SubsystemSlots; ++n) {
            auto [reliability, hours] = settings[s][n];
            if (reliability) Catalogue[s][n].Reliability = NumberText(*reliability);
            if (hours) Catalogue[s][n].Hours = NumberText(*hours);
        }
    return fault;
}

bool SaveProfile(const std::string& path) {
    std::string text;
    ForEachSubsystem([&text](int s, int n, const SubsystemEntry& entry) {
        text.append(std::to_string(s)).append("#").append(std::to_string(n)).append("#");
        text.append(entry.Reliability.Text()).append("#").append(entry.Hours.Text()).append("\r\n");
    });
    return platform::ReplaceFile(path, text);
}

void WriteProfile() {
    if (!SaveProfile(Settings.LastProfile)) {
        TheMainWindow->ShowMessage("Could not write " + Settings.LastProfile, MessageIcon::Warning);
        return;
    }
    ShowProfileName();
}

void ReadProfile() {
    if (ApplyProfile(Settings.LastProfile)) {
        std::string path = std::exchange(Settings.LastProfile, {});
        TheMainWindow->ShowMessage("Could not read " + path, MessageIcon::Warning);
        return;
    }
    ShowProfileName();
    ComputeFailureRanges();
    TheMainWindow->RefreshSubsystems();
}

}  // namespace quirkmeter
