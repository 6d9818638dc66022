// The catalogue, its texts, and the files that they come from and go to.
#include "model/number_text.h"
#include "persist/profile.h"
#include "persist/settings_file.h"
#include "program_test.h"

namespace quirkmeter {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using NumberTextTest = ProgramTest;

TEST_F(NumberTextTest, WritesSinglePrecisionInSevenDigits) {
    const std::pair<float, const char*> texts[] = {{100.0f, "100"},
                                                   {99.999f, "99.999"},
                                                   {0.5f, "0.5"},
                                                   {0.0f, "0"},
                                                   {-0.0f, "0"},
                                                   {0.001f, "0.001"},
                                                   {50.25f, "50.25"},
                                                   {999.0f, "999"},
                                                   {33.33333f, "33.33333"},
                                                   {12.34567891f, "12.34568"},
                                                   {0.00001f, "0.00001"},
                                                   {1.5e-10f, "0.00000000015"}};
    for (auto [value, text] : texts) EXPECT_EQ(NumberText(value), text);
    inprocess::SetDecimalSeparator(',');
    EXPECT_EQ(NumberText(99.999f), "99,999");
}

TEST_F(NumberTextTest, ReadsNumbersAndNothingElse) {
    const std::pair<const char*, double> numbers[] = {
        {"100", 100}, {" 99.50 ", 99.5}, {"099.5", 99.5}, {"-0", 0},    {"+5", 5},
        {".5", 0.5},  {"5.", 5},         {"1e1", 10},     {"1E-1", 0.1}};
    for (auto [text, value] : numbers) EXPECT_EQ(ReadNumber(text), value) << text;
    for (const char* text : {"", " ", ".", "nan", "inf", "0x10", "1e99", "1e", "1 2", "--1", "+-1",
                             "1.2.3", "5%", "1,5", "\t1"})
        EXPECT_EQ(ReadNumber(text), std::nullopt) << text;
    EXPECT_EQ(ReadNumber(std::string_view("5\0", 2)), std::nullopt);

    inprocess::SetDecimalSeparator(',');
    EXPECT_EQ(ReadNumber("99,5"), 99.5);
    EXPECT_EQ(ReadNumber("99.5"), std::nullopt);
    EXPECT_EQ(ReadPointNumber("99.5"), 99.5);
}

using CatalogueTest = ProgramTest;

TEST_F(CatalogueTest, WalkMeetsEverySubsystemOnceInOrder) {
    std::vector<int> counts(8);
    int last = 0;
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        EXPECT_GT(s * 100 + n, last);
        last = s * 100 + n;
        ++counts[static_cast<std::size_t>(s)];
        EXPECT_EQ(entry.Reliability, "100");
        EXPECT_EQ(entry.Hours, "1");
        EXPECT_EQ(entry.Elapsed, 0);
        EXPECT_GE(entry.Engine, 0);
    });
    EXPECT_THAT(counts, ElementsAre(0, 14, 7, 7, 8, 12, 10, 4));
    EXPECT_EQ(Catalogue[1][1].Name, Catalogue[6][1].Name);
    EXPECT_NE(Catalogue[1][1].Offset, Catalogue[6][1].Offset);
    EXPECT_EQ(SubsystemCount(8), 0);
}

class SettingsFileTest : public ProgramTest {
   protected:
    SettingsRecord Read(std::string_view content) {
        Settings = {};
        WriteFile("Quirkmeter.ini", content);
        EXPECT_TRUE(ReadSettings());
        return Settings;
    }
    std::string Write() {
        WriteSettings();
        return ReadFile("Quirkmeter.ini");
    }
};

TEST_F(SettingsFileTest, MissingFileLeavesTheStartValues) {
    EXPECT_TRUE(ReadSettings());
    EXPECT_EQ(Settings, SettingsRecord{});
    EXPECT_EQ(Write(), "LASTPROFILE=\r\n");
}

TEST_F(SettingsFileTest, WhatIsWrittenIsReadBackInItsOrder) {
    Settings.LastProfile = "/a=b/heavy.qmp";
    Settings.DisplayUpdate = Settings.DisplayFailures = Settings.PlayFailureSound = true;
    Settings.StatusHotkey = 83;
    Settings.StatusHotkeyMods = 1;
    Settings.ClearHotkeyMods = 3;  // without a key it means nothing
    Settings.ActiveHotkey = 48;
    std::string text = Write();
    EXPECT_EQ(text,
              "LASTPROFILE=/a=b/heavy.qmp\r\nSTATUS_HK=83\r\nSTATUS_HKCS=1\r\nACTIVE_HK=48\r\n"
              "ACTIVE_HKCS=0\r\nDISPLAYUPDATE=YES\r\nDISPLAYFAILURES=YES\r\n"
              "PLAYFAILURESOUND=YES\r\n");
    SettingsRecord written = Settings;
    written.ClearHotkeyMods = 0;
    EXPECT_EQ(Read(text), written);
}

TEST_F(SettingsFileTest, OddLinesChangeNothing) {
    EXPECT_EQ(Read("DISPLAYUPDATE=yes\r\n DISPLAYUPDATE=YES\r\nDISPLAYUPDATE =YES\r\n"
                   "displayupdate=YES\r\nDISPLAYUPDATE\r\n=\r\nFOO=1\r\n\r\nSTATUS_HK=8x\r\n"
                   "STATUS_HK=\r\nCLEAR_HK=99999999999\r\nACTIVE_HK= 5\r\n"),
              SettingsRecord{});
    SettingsRecord read = Read(
        "DISPLAYFAILURES=YES\rDISPLAYFAILURES=NO\nSTATUS_HK=1\r\n"
        "STATUS_HK=2\r\nCLEAR_HKCS=3\r\nLASTPROFILE=a\r\nLASTPROFILE= b ");
    EXPECT_TRUE(read.DisplayFailures);
    EXPECT_EQ(read.StatusHotkey, 2);
    EXPECT_EQ(read.ClearHotkeyMods, 3);
    EXPECT_EQ(read.LastProfile, " b ");
}

TEST_F(SettingsFileTest, HostileFilesGiveWhatCouldBeRead) {
    EXPECT_TRUE(
        Read("DISPLAYUPDATE=YES\r\n" + std::string(100'000'000, 'x') + "\r\nSTATUS_HK=65\r\n")
            .DisplayUpdate);
    EXPECT_EQ(Settings.StatusHotkey, 65);
    std::string random;
    std::uint32_t seed = 1;
    for (int i = 0; i < 1'000'000; ++i)
        random.push_back(static_cast<char>((seed = seed * 1664525 + 1013904223) >> 24));
    Read(random);

    std::filesystem::remove(Folder / "Quirkmeter.ini");
    std::filesystem::create_directory(Folder / "Quirkmeter.ini");
    Settings = {};
    EXPECT_TRUE(ReadSettings());
    EXPECT_EQ(Settings, SettingsRecord{});
    WriteSettings();
    EXPECT_THAT(Window.Messages,
                ElementsAre("! Could not write " + Folder.string() + "/Quirkmeter.ini file"));
}

TEST_F(SettingsFileTest, HardcoreModeIsLastAndNeedsItsCompanion) {
    Settings.HardcoreMode = Settings.DisplayUpdate = true;
    EXPECT_EQ(Write(), "LASTPROFILE=\r\nDISPLAYUPDATE=YES\r\nHARDCOREMODE=YES\r\n");
    Settings = {};
    WriteFile("Quirkmeter.ini", "HARDCOREMODE=YES\r\nDISPLAYUPDATE=YES\r\n");
    EXPECT_FALSE(ReadSettings());
    EXPECT_TRUE(Settings.HardcoreActive);
    EXPECT_FALSE(Settings.DisplayUpdate) << "nothing behind that line is read";
    auto companion = platform::OwnWindow("ThunderRT6FormDC", "FSQMHC",
                                         [](auto, auto, auto) { return std::intptr_t{0}; });
    EXPECT_TRUE(ReadSettings());
    EXPECT_TRUE(Settings.DisplayUpdate);
    platform::DropWindow(companion);
}

class ProfileTest : public ProgramTest {
   protected:
    // Reads a profile of that content; true when nothing was wrong with it.
    bool Read(std::string_view content) {
        WriteFile("heavy.qmp", content);
        Settings.LastProfile = (Folder / "heavy.qmp").string();
        Window.Messages.clear();
        ReadProfile();
        return Window.Messages.empty();
    }
    std::pair<std::string, std::string> Texts(int s, int n) {
        return {Catalogue[s][n].Reliability, Catalogue[s][n].Hours};
    }
    using Pair = std::pair<std::string, std::string>;
};

TEST_F(ProfileTest, SavedProfileComesBackExactly) {
    Catalogue[1][1].Reliability = "99.5";
    Catalogue[1][1].Hours = "0.5";
    Catalogue[2][4].Reliability = "99.999";
    Catalogue[2][4].Hours = "24";
    Settings.LastProfile = (Folder / "heavy.qmp").string();
    WriteProfile();
    EXPECT_EQ(Window.Heading, "Sub-systems (heavy.qmp)");
    std::string text = ReadFile("heavy.qmp");
    EXPECT_EQ(std::ranges::count(text, '\n'), 62);
    EXPECT_TRUE(text.starts_with("1#1#99.5#0.5\r\n1#2#100#1\r\n"));
    EXPECT_TRUE(text.ends_with("7#3#100#1\r\n7#4#100#1\r\n"));

    BuildCatalogue();
    EXPECT_TRUE(Read(text));
    EXPECT_EQ(Texts(1, 1), Pair("99.5", "0.5"));
    EXPECT_EQ(Texts(2, 4), Pair("99.999", "24"));
    EXPECT_THAT(Window.Refreshes, ElementsAre(false));
}

TEST_F(ProfileTest, TolerantWhereItMayBe) {
    EXPECT_TRUE(
        Read("1#1#150#2\r\n1#2#50#5000\n 2 # 3 # 099.50 # 1.0 \r7#4#0#0\r\n"
             "9#1#500#5000\r\n8#15#50#1\r\n1#1#-0#2"));
    EXPECT_EQ(Texts(1, 1), Pair("0", "2"));
    EXPECT_EQ(Texts(1, 2), Pair("50", "1"));
    EXPECT_EQ(Texts(2, 3), Pair("99.5", "1"));
    EXPECT_EQ(Texts(7, 4), Pair("0", "0"));
    EXPECT_TRUE(Read(""));
    EXPECT_EQ(SubsystemCount(8), 0);
}

TEST_F(ProfileTest, BadLineEndsTheReadingAndForgetsTheFile) {
    const std::string bad[] = {
        "1#1#99.5",      "",          "9#1#50#1",   "1#16#50#1",
        "0#1#50#500000", "1#1#nan#1", "1#1#1e99#1", "1#1#0x10#1",
        "1#1##1",        "1#1#5#1#2", "1e30#1#5#1", std::string("1#1#5\0#1", 8)};
    for (const std::string& line : bad) {
        BuildCatalogue();
        EXPECT_FALSE(Read("1#2#50#2\r\n" + line + "\r\n1#3#50#2\r\n")) << line;
        EXPECT_THAT(Window.Messages,
                    ElementsAre("! Could not read " + (Folder / "heavy.qmp").string()));
        EXPECT_EQ(Settings.LastProfile, "");
        EXPECT_EQ(Texts(1, 2), Pair("50", "2")) << "what came before stays";
        EXPECT_EQ(Texts(1, 3), Pair("100", "1"));
    }
    EXPECT_THAT(Window.Refreshes, IsEmpty());
    EXPECT_EQ(Window.Heading, "");
    Settings.LastProfile = Folder.string();
    ReadProfile();
    Settings.LastProfile = (Folder / "nowhere").string();
    ReadProfile();
    EXPECT_EQ(Window.Messages.size(), 3u);
}

TEST_F(ProfileTest, SizeIsNoProblem) {
    std::string text;
    for (int i = 0; i < 2'000'000; ++i) text += "1#1#99.5#0.5\n";
    EXPECT_TRUE(Read(text));
    EXPECT_TRUE(Read("1#1#" + std::string(500'000, '0') + "7#1\r\n"));
    EXPECT_EQ(Texts(1, 1), Pair("7", "1"));
    EXPECT_FALSE(Read("1#1#" + std::string(5'000'000, '9') + "#1\r\n"));
}

TEST_F(ProfileTest, CommaLocaleRoundTrip) {
    inprocess::SetDecimalSeparator(',');
    EXPECT_TRUE(Read("1#1#99,5#0,5\r\n"));
    EXPECT_EQ(Texts(1, 1), Pair("99,5", "0,5"));
    WriteProfile();
    EXPECT_TRUE(ReadFile("heavy.qmp").starts_with("1#1#99,5#0,5\r\n"));
    EXPECT_FALSE(Read("1#1#99.5#0.5\r\n"));
}

TEST_F(ProfileTest, FailedWriteKeepsThePathAndTheHeading) {
    Settings.LastProfile = (Folder / "nowhere" / "heavy.qmp").string();
    WriteProfile();
    EXPECT_THAT(Window.Messages, ElementsAre("! Could not write " + Settings.LastProfile));
    EXPECT_NE(Settings.LastProfile, "");
    EXPECT_EQ(Window.Heading, "");
}

}  // namespace
}  // namespace quirkmeter
