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

// Each room may include itself and those before it; the other programs, the platform only, for the
// practice simulator reads the protocol with eyes of its own.
const std::vector<std::string> Rooms = {"platform", "model",  "link", "hardcore",
                                        "persist",  "engine", "ui",   "app"};

std::ptrdiff_t Rank(const std::string& room) {
    return std::ranges::find(Rooms, room) - Rooms.begin();
}

TEST(RoomsTest, IncludesGoUpTheListAndSystemsAreToldApartInThePlatformOnly) {
    std::regex include(R"re(\s*#include "([a-z]+)/.*)re");
    std::regex system(
        R"re(\s*#\s*(if.*|include\s*<(windows|unistd|sys/|X11/|fcntl|signal)[^>]*>.*))re");
    int includes = 0;
    for (std::string program : {"src", "practice", "companion"}) {
        fs::path root = fs::path(QUIRKMETER_SOURCE) / program;
        for (const auto& file : fs::recursive_directory_iterator(root)) {
            fs::path path = file.path();
            if (path.extension() != ".cpp" && path.extension() != ".h") continue;
            std::string room = path.lexically_relative(root).begin()->string();
            auto rank = program == "src" ? Rank(room) : 0;
            std::ifstream text(path);
            for (std::string line; std::getline(text, line);) {
                SCOPED_TRACE(path.string() + ": " + line);
                std::smatch match;
                if (std::regex_match(line, match, include) && match[1] != program) {
                    ++includes;
                    EXPECT_LE(Rank(match[1]), rank);
                }
                bool inPlatform = program == "src" && room == "platform";
                EXPECT_TRUE(inPlatform || !std::regex_match(line, system));
                EXPECT_TRUE(path.parent_path().filename() == "windows" ||
                            line.find("<windows.h>") == line.npos);
            }
        }
    }
    EXPECT_GT(includes, 50);
}

}  // namespace
