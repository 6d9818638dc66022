// What the pilot sees, hears and presses: status line, sounds, hotkeys, Hardcore Mode.
#include <cstring>

#include "engine/hotkeys.h"
#include "engine/tick.h"
#include "hardcore/companion.h"
#include "link/actuation.h"
#include "link/sounds.h"
#include "link/status.h"
#include "program_test.h"

namespace quirkmeter {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SpeechTest : public LinkedTest {
   protected:
    SpeechTest() { InstallSounds(); }

    std::string Show(const std::string& line, bool force = false) {
        Engine.StatusText = line;
        ShowStatus(force);
        return Window.StatusCaption;
    }
    std::string ScreenText() {
        auto bytes = Simulator.Space.Bytes(0x3380, 128);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
};

TEST_F(SpeechTest, MessageIsOneBatchTextFirst) {
    Simulator.Space.SetValue(0x3380 + 40, 4, 0x41414141);
    Settings.DisplayUpdate = true;
    Show("Operational.");
    std::string expected = "QM:  Operational.";
    expected.resize(128);
    EXPECT_EQ(ScreenText(), expected);
    EXPECT_EQ(Simulator.Batches, 1);
    ASSERT_EQ(Simulator.Writes.size(), 2u);
    EXPECT_EQ(Simulator.Writes[1], (SimWriteRecord{0x32FA, 2, 5}));

    Show("Operational.");
    EXPECT_EQ(Simulator.Batches, 1) << "unchanged";
    EXPECT_EQ(Window.StatusChanges, 1);
    Settings.DisplayUpdate = false;
    EXPECT_EQ(Show("On hold."), "On hold.");
    EXPECT_EQ(Simulator.Batches, 1);
    Show("On hold.", true);
    EXPECT_EQ(Simulator.Batches, 2) << "asked for";

    Show(std::string(300, 'x'), true);
    EXPECT_EQ(ScreenText(), "QM:  " + std::string(122, 'x') + '\0');
    SimClose();
    EXPECT_EQ(Show("Lost."), "Lost.") << "the label needs no link";
}

TEST_F(SpeechTest, FailureListStopsOnceTheLineIsLong) {
    Settings.DisplayFailures = true;
    AddFailure(6, 9);
    AddFailure(4, 1);
    EXPECT_EQ(Show("Operational.  2 failures."),
              "Operational.  2 failures... Eng(Engine 1 (Fail)), Inst(Vacuum)");
    for (int n = 2; n <= 6; ++n) AddFailure(1, n);
    EXPECT_EQ(Show("Operational.  7 failures."),
              "Operational.  7 failures... AP(Back Course), AP(Autothrottle), AP(Attitude)...");
    Settings.DisplayFailures = false;
    EXPECT_EQ(Show("Operational."), "Operational.");
}

TEST_F(SpeechTest, HardcoreModeHidesFailuresAndSaysSoOnce) {
    Settings.DisplayFailures = Settings.HardcoreActive = true;
    Settings.StatusHotkey = 'S';
    Simulator.Space.SetValue(0x0366, 2, 1);
    AddFailure(6, 9);
    EngineTick();
    EXPECT_EQ(Window.StatusCaption, "On hold (not airborne). Hardcore Mode.");
    inprocess::SetKey('S', -32768);
    EngineTick();
    EXPECT_EQ(Window.StatusCaption, "On hold (not airborne). Hardcore Mode.");
}

TEST_F(SpeechTest, MissingSoundIsSkipped) {
    std::filesystem::remove(Folder / "sound_ok.wav");
    PlaySoundFile(SoundOk);
    PlaySoundFile(SoundWarning);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_warning.wav"));
}

// A hotkey fires on exactly its combination; a modifier that does not belong must not even have
// been tapped.
TEST_F(SpeechTest, HotkeyMatchesItsModifiersExactly) {
    constexpr std::int16_t Up = 0, Tapped = 1, Down = -32768;
    Settings.ActiveHotkey = 'A';
    for (std::int32_t mods : {0, 1, 2, 3, 4, -1})
        for (std::int16_t ctrl : {Up, Tapped, Down})
            for (std::int16_t shift : {Up, Tapped, Down})
                for (std::int16_t key : {Up, Tapped, Down}) {
                    Settings.ActiveHotkeyMods = mods;
                    inprocess::SetKey(17, ctrl);
                    inprocess::SetKey(16, shift);
                    inprocess::SetKey('A', key);
                    Engine.Deactivated = false;
                    PollHotkeys();
                    bool ctrlRight = (mods == 1 || mods == 3) ? ctrl == Down : ctrl == Up;
                    bool shiftRight = (mods == 2 || mods == 3) ? shift == Down : shift == Up;
                    EXPECT_EQ(Engine.Deactivated, key == Down && ctrlRight && shiftRight)
                        << mods << ' ' << ctrl << ' ' << shift << ' ' << key;
                }
}

TEST_F(SpeechTest, EveryHotkeyHasItsOwnKeyModifiersAndAction) {
    constexpr std::int16_t Down = -32768;
    Settings.StatusHotkey = 'S';
    Settings.StatusHotkeyMods = 1;
    Settings.ClearHotkey = 'C';
    Settings.ClearHotkeyMods = 2;
    Settings.ActiveHotkey = 'A';
    Settings.ActiveHotkeyMods = 3;
    AddFailure(6, 9);
    auto press = [](int key, std::int32_t mods) {
        inprocess::SetKey(17, WithCtrl(mods) ? Down : std::int16_t{0});
        inprocess::SetKey(16, WithShift(mods) ? Down : std::int16_t{0});
        inprocess::SetKey(key, Down);
        PollHotkeys();
        inprocess::SetKey(key, 0);
    };
    for (std::int32_t mods : {0, 1, 2, 3}) press('S', mods);
    EXPECT_EQ(Window.StatusChanges, 1);
    EXPECT_EQ(Simulator.Batches, 1);
    for (std::int32_t mods : {0, 1, 3}) press('C', mods);
    EXPECT_EQ(FailureCount, 1);
    press('C', 2);
    EXPECT_EQ(FailureCount, 0);
    for (std::int32_t mods : {0, 1, 2, 3}) press('A', mods);
    EXPECT_TRUE(Engine.Deactivated);

    // One key for two actions: the status first.
    AddFailure(6, 9);
    Settings.ClearHotkey = 'S';
    Settings.ClearHotkeyMods = 1;
    Simulator.TakeWrites();
    press('S', 1);
    ASSERT_EQ(Simulator.Writes.size(), 3u);
    EXPECT_EQ(Simulator.Writes[0].Offset, 0x3380u);
    EXPECT_EQ(Simulator.Writes[2], (SimWriteRecord{0x0B73, 1, 0}));
}

TEST_F(SpeechTest, HotkeysRepeatShareKeysAndWorkWithoutALink) {
    SimClose();
    SimInit();
    Engine.Connected = false;
    Simulator.Reply = 0;
    Settings.StatusHotkey = Settings.ActiveHotkey = 'Q';
    inprocess::SetKey('Q', -32768);
    EngineTick();
    EXPECT_TRUE(Engine.Deactivated);
    EngineTick();
    EngineTick();
    EXPECT_TRUE(Engine.Deactivated);
    EXPECT_THAT(inprocess::TakeSounds(),
                ElementsAre("sound_warning.wav", "sound_ok.wav", "sound_warning.wav"));
    EXPECT_EQ(Window.StatusCaption, "FSUIPC - No connection to Flight Simulator.");

    Settings = {};
    Settings.ClearHotkey = 'Q';
    PollHotkeys();
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty()) << "no failure to clear";
    AddFailure(1, 1);
    AddFailure(1, 2);
    PollHotkeys();
    EXPECT_EQ(FailureCount, 1);
    EXPECT_FALSE(Catalogue[1][2].Failed);
}

class HardcoreTest : public SpeechTest {
   protected:
    HardcoreTest() { Settings.HardcoreActive = true; }
    void StartCompanion() {
        Companion = platform::OwnWindow("ThunderRT6FormDC", "FSQMHC",
                                        [](auto, auto, auto) { return std::intptr_t{0}; });
    }
    platform::WindowHandle Companion = 0;
};

TEST_F(HardcoreTest, CompanionIsStartedOnceOrThePilotIsTold) {
    StartCompanion();
    EXPECT_TRUE(StartHardcoreCompanion());
    EXPECT_THAT(inprocess::TakeShellRuns(), IsEmpty());
    platform::DropWindow(Companion);
    EXPECT_FALSE(StartHardcoreCompanion());
    EXPECT_THAT(Window.Messages, ElementsAre("Problem starting FSQM Hardcore Mode process (1)."));
    inprocess::TakeShellRuns();
    WriteFile("fsqmhc.exe", "");
    EXPECT_FALSE(StartHardcoreCompanion());
    EXPECT_THAT(inprocess::TakeShellRuns(),
                ElementsAre(inprocess::ShellRun{"Open", (Folder / "fsqmhc.exe").string(), "0", "0",
                                                platform::ShowMinimized}));
    EXPECT_EQ(Window.Messages.size(), 1u);
}

TEST_F(HardcoreTest, AirborneTheListIsHiddenAndTheCompanionLookedFor) {
    StartCompanion();
    Simulator.Space.SetValue(0x0366, 2, 1);
    EngineTick();
    EXPECT_TRUE(Window.ListShown);
    int searches = inprocess::CallCount("FindWindowA");
    Simulator.Space.SetValue(0x0366, 2, 0);
    EngineTick();
    EXPECT_FALSE(Window.ListShown);
    EXPECT_EQ(inprocess::CallCount("FindWindowA"), searches + 1);
    AddFailure(1, 1);
    ToggleActive();
    EXPECT_FALSE(Engine.Deactivated);

    // A lost link leaves the lock, the hidden list and the failures; nobody looks for the
    // companion.
    Simulator.Reply = 0;
    platform::DropWindow(Companion);
    EngineTick();
    EngineTick();
    EXPECT_EQ(FailureCount, 1);
    EXPECT_EQ(Window.Unloads, 0);
    Simulator.Reply = 1;
    EngineTick();  // connects
    EXPECT_EQ(Window.Unloads, 0);
    int statusChanges = Window.StatusChanges;
    EngineTick();
    EXPECT_EQ(Window.Unloads, 1);
    EXPECT_EQ(Window.StatusChanges, statusChanges) << "the tick goes no further";
}

TEST_F(HardcoreTest, LandingShowsTheListAgainAndCompanionIsNotNeeded) {
    Simulator.Space.SetValue(0x0366, 2, 1);
    Window.ListShown = false;
    EngineTick();
    EXPECT_TRUE(Window.ListShown);
    EXPECT_EQ(Window.Unloads, 0);
}

TEST_F(HardcoreTest, LeavingAFlightMovesTheAircraftThreeTimes) {
    LeaveFlight();
    EXPECT_EQ(Simulator.Batches, 0);
    Engine.Airborne = true;
    double start = inprocess::Elapsed();
    LeaveFlight();
    EXPECT_EQ(Simulator.Batches, 9);
    EXPECT_NEAR(inprocess::Elapsed() - start, 2.0, 1e-6);
}

}  // namespace
}  // namespace quirkmeter
