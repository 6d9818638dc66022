// What the pilot sees, hears and presses: status line, sounds, hotkeys, Hardcore Mode.
#include "engine/hotkeys.h"
#include "engine/tick.h"
#include "hardcore/companion.h"
#include "link/status.h"
#include "program_test.h"

namespace quirkmeter {

namespace {

constexpr std::int16_t Up = 0, Tapped = 1, Down = -32768;

class SpeechTest : public LinkedTest {
   protected:
    std::string Show(const std::string& line, bool force = false) {
        EngineState.StatusText = line;
        ShowStatus(force);
        return window_.StatusCaption;
    }
    std::string ScreenText() {
        auto bytes = simulator_.Space.Bytes(0x3380, 128);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    void Poll(int key, std::int16_t keyState, std::int16_t ctrl, std::int16_t shift) {
        inprocess::SetKey(17, ctrl);
        inprocess::SetKey(16, shift);
        inprocess::SetKey(key, keyState);
        PollHotkeys();
        inprocess::SetKey(key, Up);
    }
};

TEST_F(SpeechTest, MessageIsOneBatchTextFirst) {
    simulator_.Space.SetValue(0x3380 + 40, 4, 0x41414141);
    Settings.DisplayUpdate = true;
    Show("Operational.");
    std::string expected = "QM:  Operational.";
    expected.resize(128);
    EXPECT_EQ(ScreenText(), expected);
    ASSERT_EQ(simulator_.Writes.size(), 2u);
    EXPECT_EQ(simulator_.Writes[1], (SimWriteRecord{0x32FA, 2, 5}));
    Show("Operational.");
    EXPECT_EQ(window_.StatusChanges, 1) << "unchanged";
    Settings.DisplayUpdate = false;
    EXPECT_EQ(Show("On hold."), "On hold.");
    EXPECT_EQ(simulator_.Batches, 1);
    Show(std::string(300, 'x'), true);
    EXPECT_EQ(simulator_.Batches, 2) << "asked for";
    EXPECT_EQ(ScreenText(), "QM:  " + std::string(122, 'x') + '\0');
    std::int32_t result = 0;
    EXPECT_TRUE(SimRead(0, BlockUsed - 4 - 16 - 100, nullptr, result));
    Show("There is room for its seconds only.", true);
    EXPECT_EQ(simulator_.Batches, 2) << "a message is sent whole or not at all";
    SimClose();
    EXPECT_EQ(Show("Lost.", true), "Lost.") << "the label needs no link";
}

TEST_F(SpeechTest, FailureListStopsOnceTheLineIsLong) {
    Settings.DisplayFailures = true;
    for (int n = 1; n <= 6; ++n) AddFailure(1, n);
    EXPECT_EQ(Show("Operational.  6 failures."),
              "Operational.  6 failures... AP(Back Course), AP(Autothrottle), AP(Attitude)...");
    while (FailureCount > 2) RemoveFailureRow(FailureCount);
    std::string newest = ".. AP(Altitude)";
    EXPECT_EQ(Show(std::string(69 - newest.size(), 'x')).substr(69), ", AP(Airspeed)");
    EXPECT_EQ(Show(std::string(70 - newest.size(), 'x')).substr(70), "...");
}

// A hotkey fires on exactly its combination; a modifier that does not belong must not even have
// been tapped.
TEST_F(SpeechTest, HotkeyMatchesItsModifiersExactly) {
    Settings.ActiveHotkey = 'A';
    for (std::int32_t mods : {0, 1, 2, 3, 4, -1})
        for (std::int16_t ctrl : {Up, Tapped, Down})
            for (std::int16_t shift : {Up, Tapped, Down})
                for (std::int16_t key : {Up, Tapped, Down}) {
                    Settings.ActiveHotkeyMods = mods;
                    EngineState.Deactivated = false;
                    int calls = inprocess::CallCount("GetAsyncKeyState");
                    Poll('A', key, ctrl, shift);
                    calls = inprocess::CallCount("GetAsyncKeyState") - calls;
                    EXPECT_EQ(calls, key == Down ? 3 : 1) << "asking for a key forgets its tap";
                    bool ctrlRight = (mods == 1 || mods == 3) ? ctrl == Down : ctrl == Up;
                    bool shiftRight = (mods == 2 || mods == 3) ? shift == Down : shift == Up;
                    EXPECT_EQ(EngineState.Deactivated, key == Down && ctrlRight && shiftRight)
                        << mods << ' ' << ctrl << ' ' << shift << ' ' << key;
                }
}

TEST_F(SpeechTest, EveryHotkeyHasItsOwnKeyModifiersAndAction) {
    Settings.StatusHotkey = Settings.ClearHotkey = 'S';  // one key for two: the status first
    Settings.StatusHotkeyMods = Settings.ClearHotkeyMods = 1;
    Settings.ActiveHotkey = 'A';
    Settings.ActiveHotkeyMods = 2;
    AddFailure(6, 8);
    AddFailure(6, 9);
    for (int key : {int{'S'}, int{'A'}})
        for (std::int16_t ctrl : {Up, Down}) Poll(key, Down, ctrl, ctrl == Down ? Up : Down);
    EXPECT_EQ(simulator_.Writes.size(), 3u);
    EXPECT_EQ(simulator_.Writes[0].Offset, 0x3380u);
    EXPECT_EQ(simulator_.Writes[2], (SimWriteRecord{0x0B73, 1, 0}));
    EXPECT_EQ(FailureCount, 1);
    EXPECT_TRUE(EngineState.Deactivated);
    Settings.ClearHotkeyMods = 2;
    Poll('S', Down, Up, Down);
    EXPECT_EQ(FailureCount, 0);
    EXPECT_THAT(inprocess::TakeSounds(),
                ElementsAre("sound_ok.wav", "sound_warning.wav", "sound_ok.wav"));
    std::filesystem::remove(folder_ / "sound_ok.wav");
    Poll('A', Down, Up, Down);
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty()) << "a missing file is skipped";
}

class HardcoreTest : public SpeechTest {
   protected:
    HardcoreTest() { Settings.HardcoreActive = true; }
};

TEST_F(HardcoreTest, HidesFailuresAndSaysSoOnce) {
    Settings.DisplayFailures = true;
    Settings.StatusHotkey = 'S';
    simulator_.Space.SetValue(0x0366, 2, 1);
    AddFailure(6, 9);
    window_.ListShown = false;
    EngineTick();
    EXPECT_EQ(window_.StatusCaption, "On hold (not airborne). Hardcore Mode.");
    Poll('S', Down, Up, Up);
    EXPECT_EQ(window_.StatusCaption, "On hold (not airborne). Hardcore Mode.");
    EXPECT_TRUE(window_.ListShown);
    EXPECT_EQ(window_.Unloads, 0) << "no companion is needed on the ground";
}

TEST_F(HardcoreTest, AirborneTheListIsHiddenAndTheCompanionLookedFor) {
    auto companion = platform::OwnWindow("ThunderRT6FormDC", "FSQMHC", {});
    Settings.ActiveHotkey = 'A';
    EngineTick();
    EXPECT_FALSE(window_.ListShown);
    AddFailure(1, 1);
    Poll('A', Down, Up, Up);
    EXPECT_FALSE(EngineState.Deactivated);

    // A lost link leaves the lock, the hidden list and the failures; nobody looks for the
    // companion.
    simulator_.Reply = 0;
    platform::DropWindow(companion);
    EngineTick();
    EngineTick();
    EXPECT_EQ(FailureCount, 1);
    EXPECT_FALSE(window_.ListShown);
    simulator_.Reply = 1;
    EngineTick();  // connects
    EXPECT_EQ(window_.Unloads, 0);
    int statusChanges = window_.StatusChanges;
    EngineTick();
    EXPECT_EQ(window_.Unloads, 1);
    EXPECT_EQ(window_.StatusChanges, statusChanges) << "the tick goes no further";
}

}  // namespace

}  // namespace quirkmeter
