#include "rehearse/files.h"

#include <wx/string.h>

#include <fstream>
#include <iostream>

#include "model/catalogue.h"
#include "persist/profile.h"
#include "platform/platform.h"

namespace quirkmeter::rehearse {

std::optional<std::string> LoadProfile(const std::string& path) {
    BuildCatalogue();
    auto fault = ApplyProfile(path);
    if (!fault) return std::nullopt;
    std::string faulty = platform::FileName(path);
    if (fault->Line > 0) faulty = "line " + std::to_string(fault->Line) + " of " + faulty;
    return faulty + " " + std::string(fault->What);
}

std::string NameInUtf8(const std::string& path) {
    return wxString(platform::FileName(path).c_str(), wxConvFile).utf8_string();
}

bool CanWriteReport(const std::string& path) {
    return path == StandardOutput || platform::IsStream(path) || platform::CanReplaceFile(path);
}

bool WriteReport(const std::string& path, const std::string& report) {
    if (path == StandardOutput) return static_cast<bool>(std::cout << report << std::flush);
    if (!platform::IsStream(path)) return platform::ReplaceFile(path, report);
    std::ofstream stream(path, std::ios::app);
    stream << report;
    stream.close();
    return stream.good();
}

}  // namespace quirkmeter::rehearse
