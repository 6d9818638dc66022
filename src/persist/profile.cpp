#include "persist/profile.h"

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "model/catalogue.h"
#include "model/main_window.h"
#include "model/number_text.h"
#include "model/settings.h"
#include "persist/line_reader.h"
#include "platform/platform.h"

namespace quirkmeter {

namespace {

constexpr float MaxReliability = 100;
constexpr float MaxHours = 999;

struct ProfileLine {
    double System, Subsystem;
    float Reliability, Hours;
};

std::optional<ProfileLine> ParseLine(std::string_view line) {
    std::array<double, 4> fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        std::size_t end = i < 3 ? line.find('#') : line.size();
        if (end == line.npos) return std::nullopt;
        auto number = ReadNumber(line.substr(0, end));
        if (!number) return std::nullopt;
        fields[i] = *number;
        if (i < 3) line.remove_prefix(end + 1);
    }
    // Whole numbers are read as numbers that round to one, a half to the even neighbour.
    return ProfileLine{std::nearbyint(fields[0]), std::nearbyint(fields[1]),
                       static_cast<float>(fields[2]), static_cast<float>(fields[3])};
}

bool InRange(float value, float max) {
    return value >= 0 && value <= max;
}

bool ApplyLine(std::string_view text) {
    auto line = ParseLine(text);
    if (!line) return false;
    bool useReliability = InRange(line->Reliability, MaxReliability);
    bool useHours = InRange(line->Hours, MaxHours);
    if (!useReliability && !useHours) return true;
    if (line->System < 1 || line->System > SystemSlots || line->Subsystem < 1 ||
        line->Subsystem > SubsystemSlots)
        return false;
    SubsystemEntry& entry =
        Catalogue[static_cast<int>(line->System)][static_cast<int>(line->Subsystem)];
    if (useReliability) entry.Reliability = NumberText(line->Reliability);
    if (useHours) entry.Hours = NumberText(line->Hours);
    return true;
}

bool ApplyFile(const std::string& path) {
    LineReader file(path);
    std::string line;
    while (file.Next(line))
        if (!ApplyLine(line)) return false;
    return file.Ok();
}

void ShowProfileName() {
    TheMainWindow->SetSubSystemsHeading("Sub-systems (" + platform::FileName(Settings.LastProfile) +
                                        ")");
}

}  // namespace

void WriteProfile() {
    std::string text;
    ForEachSubsystem([&text](int s, int n, const SubsystemEntry& entry) {
        text.append(std::to_string(s)).append("#").append(std::to_string(n)).append("#");
        text.append(entry.Reliability.Text()).append("#").append(entry.Hours.Text()).append("\r\n");
    });
    if (!platform::ReplaceFile(Settings.LastProfile, text)) {
        TheMainWindow->ShowMessage("Could not write " + Settings.LastProfile, MessageIcon::Warning);
        return;
    }
    ShowProfileName();
}

void ReadProfile() {
    if (!ApplyFile(Settings.LastProfile)) {
        std::string path = std::exchange(Settings.LastProfile, {});
        TheMainWindow->ShowMessage("Could not read " + path, MessageIcon::Warning);
        return;
    }
    ShowProfileName();
    TheMainWindow->RefreshSubsystems(false);
}

}  // namespace quirkmeter
