// The settings file and the profile files.
#include "persist/profile.h"
#include "persist/settings_file.h"
#include "program_test.h"
#include "scripted_chance.h"

namespace quirkmeter {

namespace {

class PersistTest : public ProgramTest {
   protected:
    SettingsRecord ReadSettingsFrom(std::string_view content) {
        Settings = {};
        WriteFile("Quirkmeter.ini", content);
        EXPECT_TRUE(ReadSettings());
        return Settings;
    }
    std::string WrittenSettings() {
        WriteSettings();
        return ReadFile("Quirkmeter.ini");
    }

    // True when the profile has no fault.
    bool ReadProfileFrom(std::string_view content) {
        WriteFile("heavy.qmp", content);
        Settings.LastProfile = (folder_ / "heavy.qmp").string();
        window_.Messages.clear();
        ReadProfile();
        return window_.Messages.empty();
    }
    std::string Texts(int s, int n) {
        return Catalogue[s][n].Reliability.Text() + '#' + Catalogue[s][n].Hours.Text();
    }
};

TEST_F(PersistTest, SettingsAreReadBackAsWritten) {
    EXPECT_TRUE(ReadSettings());
    EXPECT_EQ(Settings, SettingsRecord{}) << "there is no file";
    Settings.ClearHotkey.Key = -1;
    Settings.ActiveHotkey.Mods = 3;
    EXPECT_EQ(WrittenSettings(), "LASTPROFILE=\r\n") << "modifiers without a key mean nothing";
    for (const char* path : {"x\r\nHARDCOREMODE=YES.qmp", "x\rDISPLAYUPDATE=YES", "x\n"}) {
        Settings.LastProfile = path;
        EXPECT_EQ(WrittenSettings(), "LASTPROFILE=\r\n") << "no line but its own for " << path;
    }
    SettingsRecord all{.LastProfile = "/a=b/heavy.qmp",
                       .DisplayUpdate = true,
                       .DisplayFailures = true,
                       .PlayFailureSound = true,
                       .StatusHotkey = {83, 1},
                       .ClearHotkey = {65, 3},
                       .ActiveHotkey = {1, 0}};
    Settings = all;
    std::string text = WrittenSettings();
    EXPECT_EQ(text,
              "LASTPROFILE=/a=b/heavy.qmp\r\nSTATUS_HK=83\r\nSTATUS_HKCS=1\r\nCLEAR_HK=65\r\n"
              "CLEAR_HKCS=3\r\nACTIVE_HK=1\r\nACTIVE_HKCS=0\r\nDISPLAYUPDATE=YES\r\n"
              "DISPLAYFAILURES=YES\r\nPLAYFAILURESOUND=YES\r\n");
    EXPECT_EQ(ReadSettingsFrom(text), all);
}

TEST_F(PersistTest, InvalidSettingsChangeNothing) {
    EXPECT_EQ(ReadSettingsFrom("DISPLAYUPDATE=yes\r\n DISPLAYUPDATE=YES\r\nDISPLAYUPDATE =YES\r\n"
                               "displayupdate=YES\r\nDISPLAYUPDATE\r\n=\r\nFOO=1\r\n\r\n"
                               "HARDCOREMODE=NO\r\nSTATUS_HK=8x\r\nACTIVE_HK= 5\r\n"),
              SettingsRecord{});
    EXPECT_EQ(ReadSettingsFrom("DISPLAYFAILURES=YES\rDISPLAYFAILURES=NO\nSTATUS_HK=1\r\n"
                               "STATUS_HK=2\r\nSTATUS_HK=\r\nLASTPROFILE=a\r\nLASTPROFILE= b \r\n"
                               "CLEAR_HK=3\r\nCLEAR_HK=99999999999"),
              (SettingsRecord{.LastProfile = " b ",
                              .DisplayFailures = true,
                              .StatusHotkey = {2},
                              .ClearHotkey = {3}}));
    std::string tooLong = "LASTPROFILE=" + std::string(3'000'000, 'x');
    EXPECT_EQ(ReadSettingsFrom(tooLong + "\r\nDISPLAYUPDATE=YES"),
              (SettingsRecord{.LastProfile = "", .DisplayUpdate = true}));
}

// A folder of its name stands in for a file that another program has locked.
TEST_F(PersistTest, SettingsThatCannotBeReadAreTriedAgainAndNeverReplaced) {
    auto ini = folder_ / "Quirkmeter.ini";
    std::filesystem::create_directory(ini);
    auto release = [&] {
        std::filesystem::remove(ini);
        WriteFile("Quirkmeter.ini", "DISPLAYUPDATE=YES");
    };
    EXPECT_TRUE(ReadSettings());
    EXPECT_NEAR(inprocess::Elapsed(), 2, 1e-6);
    release();
    WriteSettings();
    EXPECT_EQ(ReadFile("Quirkmeter.ini"), "DISPLAYUPDATE=YES");
    EXPECT_THAT(window_.Messages, ElementsAre("! Could not read " + ini.string() + " file",
                                              "! Could not write " + ini.string() + " file"));
    std::filesystem::remove(ini);
    std::filesystem::create_directory(ini);
    inprocess::WhenAsleep([&] {
        if (inprocess::Elapsed() > 3) release();
    });
    EXPECT_TRUE(ReadSettings());
    EXPECT_EQ(WrittenSettings(), "LASTPROFILE=\r\nDISPLAYUPDATE=YES\r\n");
    EXPECT_EQ(window_.Messages.size(), 2u);
}

TEST_F(PersistTest, ReadyMadeProfilesAreAsTheProgramWritesThemInEveryCountry) {
    inprocess::SetDecimalSeparator(',');
    int count = 0;
    for (const auto& file : std::filesystem::directory_iterator(PROFILES_FOLDER)) {
        std::string text = ReadFile(file.path().generic_string());
        EXPECT_TRUE(ReadProfileFrom(text)) << file.path();
        WriteProfile();
        EXPECT_EQ(ReadFile("heavy.qmp"), text) << file.path();
        ++count;
    }
    EXPECT_EQ(count, 7);
}

TEST_F(PersistTest, InvalidValuesOfAProfileAreIgnoredAndNumbersReadTolerantly) {
    EXPECT_TRUE(ReadProfileFrom(
        "1#1#150#2\r\n1#1#-0#1000\r\n1#1#-1#-1\r\n 2 # 3 # 099.50 # 1.0 \r7#4#0#0\r\n"
        "9#1#500#5000\r\n8#15#50#1\r\n3#1.5#40#3\r\n1#2#50#5\n1#2#100#999\r\n1#3#" +
        std::string(500'000, '0') + "7#1"));
    EXPECT_EQ(Texts(1, 1), "0#2");
    EXPECT_EQ(Texts(1, 2), "100#999");
    EXPECT_EQ(Texts(1, 3), "7#1");
    EXPECT_EQ(Texts(2, 3), "99.5#1");
    EXPECT_EQ(Texts(7, 4), "0#0");
    EXPECT_EQ(Texts(3, 2), "40#3") << "a half is rounded to the even number";
    EXPECT_TRUE(ReadProfileFrom(""));
}

TEST_F(PersistTest, AGoodProfileIsNamedInTheHeadingAndABadOneForgotten) {
    DrawScript chance;
    EXPECT_TRUE(ReadProfileFrom("1#1#50#2\r\n"));
    EXPECT_EQ(window_.Heading, "Sub-systems (heavy.qmp)");
    EXPECT_EQ(chance.Asked.size(), 3u * 62) << "the ranges are computed anew";
    EXPECT_EQ(window_.Refreshes, 1);
    std::string heavy = Settings.LastProfile;
    EXPECT_FALSE(ReadProfileFrom("1#1#60#3\r\n1#2#50\r\n1#3#50#2\r\n"));
    EXPECT_THAT(window_.Messages, ElementsAre("! Could not read " + heavy));
    EXPECT_EQ(Settings.LastProfile, "");
    EXPECT_EQ(Texts(1, 1) + " " + Texts(1, 3), "60#3 100#1") << "lines before the bad one stay";
    EXPECT_EQ(window_.Refreshes, 1) << "a bad one";

    Settings.LastProfile = (folder_ / "light.qmp").string();
    WriteProfile();
    EXPECT_EQ(window_.Heading, "Sub-systems (light.qmp)");
    Settings.LastProfile = (folder_ / "none/a.qmp").string();
    WriteProfile();
    EXPECT_EQ(window_.Messages.back(), "! Could not write " + Settings.LastProfile);
    EXPECT_EQ(window_.Heading, "Sub-systems (light.qmp)");
}

TEST_F(PersistTest, ABadLineEndsTheReading) {
    std::vector<std::string> bad = {"1#1#99.5", "",          "9#1#50#1",   "1#16#50#1",
                                    "1#0#50#1", "1#1##1",    "0#1#50#500", "1#1#5#1#2",
                                    "1#1#5x#1", "1e30#1#5#1"};
    bad.emplace_back("1#1#5\0#1", 8);
    bad.push_back("1#1#" + std::string(5'000'000, '9') + "#1");
    for (const std::string& line : bad) EXPECT_FALSE(ReadProfileFrom(line + "\r\n")) << line;
    Settings.LastProfile = folder_.string();
    ReadProfile();
    EXPECT_EQ(window_.Messages.size(), 2u) << "a folder";
}

}  // namespace

}  // namespace quirkmeter
