// The layout of the source tree: which room may look into which.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Each room may include itself and those before it.
const std::vector<std::string> Rooms = {"platform", "model",  "link", "hardcore",
                                        "persist",  "engine", "ui",   "app"};

std::size_t Rank(const std::string& room) {
    return static_cast<std::size_t>(std::ranges::find(Rooms, room) - Rooms.begin());
}

template <typename Visit>
void ForEachLine(const fs::path& folder, Visit visit) {
    for (const auto& file : fs::recursive_directory_iterator(folder)) {
        if (file.path().extension() != ".cpp" && file.path().extension() != ".h") continue;
        std::ifstream text(file.path());
        for (std::string line; std::getline(text, line);) visit(file.path(), line);
    }
}

TEST(RoomsTest, IncludesGoUpTheListOnly) {
    const fs::path source = fs::path(QUIRKMETER_SOURCE) / "src";
    const std::regex include(R"re(\s*#include "([a-z]+)/.*)re");
    int includes = 0;
    ForEachLine(source, [&](const fs::path& file, const std::string& line) {
        std::smatch match;
        if (!std::regex_match(line, match, include)) return;
        ++includes;
        std::string room = file.lexically_relative(source).begin()->string();
        ASSERT_LT(Rank(match[1]), Rooms.size()) << file << ": " << line;
        EXPECT_LE(Rank(match[1]), Rank(room)) << file << ": " << line;
    });
    EXPECT_GT(includes, 50);
}

TEST(RoomsTest, SystemsAreToldApartInThePlatformOnly) {
    const std::regex systemHeader(
        R"re(\s*#\s*include\s*<(windows|unistd|sys/|X11/|fcntl|signal)[^>]*>.*)re");
    const std::regex condition(R"re(\s*#\s*if.*)re");
    for (const char* folder : {"src", "practice", "companion"})
        ForEachLine(fs::path(QUIRKMETER_SOURCE) / folder,
                    [&](const fs::path& file, const std::string& line) {
                        if (file.string().find("/platform/") != std::string::npos) return;
                        EXPECT_FALSE(std::regex_match(line, systemHeader)) << file << ": " << line;
                        EXPECT_FALSE(std::regex_match(line, condition)) << file << ": " << line;
                    });
    ForEachLine(fs::path(QUIRKMETER_SOURCE) / "src/platform",
                [](const fs::path& file, const std::string& line) {
                    if (file.string().find("/windows/") != std::string::npos) return;
                    EXPECT_EQ(line.find("<windows.h>"), std::string::npos) << file;
                });
}

// The practice simulator reads the protocol with eyes of its own.
TEST(RoomsTest, PracticeSimulatorSharesThePlatformOnly) {
    const std::regex include(R"re(\s*#include "(model|link|hardcore|persist|engine|ui)/.*)re");
    ForEachLine(fs::path(QUIRKMETER_SOURCE) / "practice",
                [&](const fs::path& file, const std::string& line) {
                    EXPECT_FALSE(std::regex_match(line, include)) << file << ": " << line;
                });
}

}  // namespace
