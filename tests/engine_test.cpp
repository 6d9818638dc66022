// Connection, tick, failure draw and hotkeys.
#include <cstring>

#include "engine/connection.h"
#include "engine/tick.h"
#include "link/actuation.h"
#include "program_test.h"
#include "scripted_chance.h"

namespace quirkmeter {

namespace {

using testing::Pair;

constexpr std::uint32_t Pause = 0x0264, OnGround = 0x0366, Engines = 0x0AEC;
constexpr std::uint32_t Gear = 0x0BE8, Flaps = 0x0BDC;
constexpr std::int16_t Down = -32768, DownAndTapped = -32767, Tapped = 1, Clear = 0;
constexpr char NoConnection[] = "FSUIPC - No connection to Flight Simulator.";

class EngineTest : public LinkedTest {
   protected:
    void Tick(int count = 1) {
        while (count-- > 0) EngineTick();
    }
    // Every sub-system fails at its next draw step unless a test sets other values.
    void MakeEverythingDue() {
        ForEachSubsystem([](int, int, SubsystemEntry& entry) {
            entry.Reliability = "0";
            entry.RangeLow = 0, entry.RangeHigh = 1;
            entry.DrawAt = entry.Elapsed + 1;
        });
    }
    void SetVariable(std::uint32_t offset, std::uint32_t size, std::int64_t value) {
        simulator_.Space.SetValue(offset, size, static_cast<std::uint64_t>(value));
    }
    std::string Caption() { return window_.Captions.empty() ? "" : window_.Captions.back(); }
    std::vector<std::string> Sounds() { return inprocess::TakeSounds(); }

    DrawScript chance_;
};

// --- Tick --------------------------------------------------------------------------------------

TEST_F(EngineTest, ATickReadsItsFiveVariablesInOneBatch) {
    Tick();
    EXPECT_EQ(simulator_.Batches, 1);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> reads;
    for (std::size_t at = 0; simulator_.Block[at] != std::byte{0};) {
        std::uint32_t header[4];
        std::memcpy(header, &simulator_.Block[at], sizeof header);
        EXPECT_EQ(header[0], 1u) << "a tick only reads while nothing is failed";
        reads.emplace_back(header[1], header[2]);
        at += sizeof header + header[2];
    }
    EXPECT_THAT(reads, ElementsAre(Pair(Engines, 2), Pair(Pause, 2), Pair(OnGround, 2),
                                   Pair(Gear, 4), Pair(Flaps, 4)));
}

TEST_F(EngineTest, HoldsWhilePausedOnTheGroundOrDeactivated) {
    std::tuple<int, int, bool, const char*> rows[] = {
        {0, 0, false, "Operational."},
        {1, 0, false, "On hold (sim paused)."},
        {2, 0, false, "On hold (sim paused)."},
        {0x8000, 0, false, "On hold (sim paused)."},
        {0, 1, false, "On hold (not airborne)."},
        {0, 2, false, "On hold (not airborne)."},
        {0, 0x8000, false, "On hold (not airborne)."},
        {0, 0, true, "On hold (deactivated)."},
        {1, 1, false, "On hold (sim paused)(not airborne)."},
        {1, 0, true, "On hold (sim paused)(deactivated)."},
        {0, 1, true, "On hold (not airborne)(deactivated)."},
        {1, 1, true, "On hold (sim paused)(not airborne)(deactivated)."}};
    SubsystemEntry& entry = Entry("Inst(Vacuum)");
    Fail("Radio(ADF)");
    for (auto [pause, onGround, deactivated, status] : rows) {
        SetVariable(Pause, 2, pause);
        SetVariable(OnGround, 2, onGround);
        EngineState.Deactivated = deactivated;
        MakeEverythingDue();
        std::int32_t elapsed = entry.Elapsed, divider = EngineState.DrawDivider;
        simulator_.TakeWrites();
        Tick(10);
        EXPECT_EQ(Caption(), status) << "pause " << pause << ", on ground " << onGround;
        bool operates = std::string_view(status) == "Operational.";
        EXPECT_EQ(entry.Elapsed, elapsed + operates) << "a draw step in ten ticks, " << status;
        EXPECT_EQ(FailureCount, operates ? 62 : 1) << status;
        EXPECT_EQ(EngineState.DrawDivider, divider) << status;
        EXPECT_GE(simulator_.TakeWrites().size(), 10u) << "failures stay in force, " << status;
        if (operates) ClearAllFailures(true), Fail("Radio(ADF)");
    }
}

TEST_F(EngineTest, ADrawStepComesWithEveryTenthOperatingTick) {
    SubsystemEntry& entry = Entry("Inst(Vacuum)");
    entry.Reliability = "50";
    for (int step = 0; step < 3; ++step) {
        Tick(6);
        SetVariable(Pause, 2, 1);
        Tick(7);
        SetVariable(Pause, 2, 0);
        Tick(3);
        EXPECT_EQ(entry.Elapsed, step) << "after nine operating ticks on both sides of a hold";
        Tick();
        EXPECT_EQ(entry.Elapsed, step + 1) << "with the tenth operating tick";
    }
}

TEST_F(EngineTest, TheStatusLineCountsTheFailures) {
    Settings.DisplayFailures = true;
    Tick();
    EXPECT_EQ(Caption(), "Operational.  No failures.");
    Fail("Inst(Vacuum)");
    Tick();
    EXPECT_EQ(Caption(), "Operational.  1 failures... Inst(Vacuum)");
    Fail("Eng(Engine 1 (Fail))");
    Tick();
    EXPECT_EQ(Caption(), "Operational.  2 failures... Eng(Engine 1 (Fail)), Inst(Vacuum)");
    Settings.DisplayFailures = false;
    Tick();
    EXPECT_EQ(Caption(), "Operational.");
}

TEST_F(EngineTest, ANewFailureSoundsAndEveryChangeRefreshesTheList) {
    auto fail = [](const char* label) { return [label] { Fail(label); }; };
    auto clear = [](int s, int n) { return [s, n] { ClearFailure(s, n); }; };
    std::tuple<const char*, std::vector<std::function<void()>>, bool, int, std::vector<std::string>>
        rows[] = {{"nothing", {}, true, 0, {}},
                  {"one failed", {fail("Radio(ADF)")}, true, 1, {"sound_failure.wav"}},
                  {"two failed",
                   {fail("Radio(COM)"), fail("Radio(NAV)")},
                   true,
                   1,
                   {"sound_failure.wav"}},
                  {"one cleared", {clear(7, 1)}, true, 1, {}},
                  {"one failed, one cleared", {fail("Radio(ADF)"), clear(7, 2)}, true, 0, {}},
                  {"one failed, its sound switched off", {fail("Radio(COM)")}, false, 1, {}}};
    for (auto& [rule, acts, playFailureSound, refreshes, sounds] : rows) {
        Settings.PlayFailureSound = playFailureSound;
        window_.Refreshes = 0;
        for (auto& act : acts) act();
        Tick();
        EXPECT_EQ(window_.Refreshes, refreshes) << rule;
        EXPECT_EQ(Sounds(), sounds) << rule;
    }
}

// --- Connection --------------------------------------------------------------------------------

TEST_F(EngineTest, ConnectingPlaysASoundUnlessItFailsQuietly) {
    ConnectToSimulator(false);
    EXPECT_EQ(simulator_.Batches, 0) << "it is connected already";
    EXPECT_THAT(Sounds(), IsEmpty()) << "it is connected already";
    for (auto [there, quiet, sound] : {std::tuple{true, false, "sound_ok.wav"},
                                       {true, true, "sound_ok.wav"},
                                       {false, false, "sound_warning.wav"},
                                       {false, true, ""}}) {
        SetDisconnected();
        simulator_.Reply = there ? 1 : 2;
        ConnectToSimulator(quiet);
        std::string rule = std::string(there ? "a simulator" : "none") + (quiet ? ", quiet" : "");
        EXPECT_EQ(EngineState.Connected, there) << rule;
        EXPECT_EQ(EngineState.StatusText, there ? "Connected" : NoConnection) << rule;
        EXPECT_EQ(Sounds(), std::vector<std::string>(*sound != 0, sound)) << rule;
    }
}

TEST_F(EngineTest, ALostLinkClearsTheFailuresAndIsTriedAgainInEveryTick) {
    for (bool queued : {true, false}) {  // the answer fails, or the first read
        Fail("Inst(Vacuum)");
        SetVariable(Pause, 2, 1);
        Tick();
        Sounds();
        simulator_.Reply = 2;
        if (!queued) SimClose();
        Tick();
        EXPECT_THAT(Sounds(), ElementsAre("sound_warning.wav"));
        EXPECT_EQ(Caption(), NoConnection);
        EXPECT_THAT(Failures(), IsEmpty());
        EXPECT_TRUE(EngineState.SimPaused && EngineState.Airborne) << "what was read last stays";
        simulator_.Batches = 0;
        Tick(3);
        EXPECT_EQ(simulator_.Batches, 3) << "one attempt in each tick";
        EXPECT_THAT(Sounds(), IsEmpty()) << "silent";
        simulator_.Reply = 1;
        Tick();
        EXPECT_THAT(Sounds(), ElementsAre("sound_ok.wav"));
        EXPECT_EQ(Caption(), "Connected") << "for one tick";
        Tick();
        EXPECT_EQ(Caption(), "On hold (sim paused).");
    }
}

// --- Failure draw ------------------------------------------------------------------------------

TEST_F(EngineTest, APeriodHasOneDrawAtItsDrawStepAndStartsAgainAtItsEnd) {
    SubsystemEntry& entry = Entry("Elec(Battery)");
    entry.Reliability = "50";
    entry.Hours = "0.05";  // 18 draw steps
    entry.RangeLow = 100, entry.RangeHigh = 200;
    entry.DrawAt = 7;
    Tick(6 * 10 + 9);
    EXPECT_THAT(chance_.Asked, IsEmpty()) << "before its draw step";
    Tick();
    EXPECT_THAT(chance_.Asked, ElementsAre(Pair(100000, 0))) << "at its draw step";
    Tick(10 * 10 + 9);
    EXPECT_EQ(chance_.Asked.size(), 1u) << "until the period ends";
    chance_.Next = {11};
    Tick();
    EXPECT_THAT(chance_.Asked, ElementsAre(Pair(100000, 0), Pair(18, 1))) << "at its end";
    EXPECT_EQ(entry.Elapsed, 0);
    EXPECT_EQ(entry.DrawAt, 11);
}

// With more digits than a double has, a period could end a step late.
TEST_F(EngineTest, APeriodEndsWithTheStepThatFillsItsHours) {
    std::pair<std::string, int> rows[] = {{"0", 1}, {"0.0125", 5}, {"0.0375", 14}, {"1", 360}};
    SubsystemEntry& entry = Entry("AP(Mach)");
    entry.Reliability = "99.999";
    auto check = [&](const std::string& hours, int steps) {
        entry.Hours = hours;
        entry.Elapsed = std::max(steps - 2, 0);
        if (steps > 1) Tick(10);
        EXPECT_EQ(entry.Elapsed, steps - 1) << hours << " hours";
        Tick(10);
        EXPECT_EQ(entry.Elapsed, 0) << hours << " hours";
    };
    for (auto& [hours, steps] : rows) check(hours, steps);
    for (int tenths = 1; tenths <= 9; ++tenths) check("0." + std::to_string(tenths), 36 * tenths);
}

TEST_F(EngineTest, ADrawWithinTheFailureRangeFails) {
    SubsystemEntry& entry = Entry("Inst(Pitot Static)");
    for (auto [draw, fails] : {std::pair{99, false}, {100, true}, {199, true}, {200, false}}) {
        entry.Reliability = "50";
        entry.RangeLow = 100, entry.RangeHigh = 200;
        entry.Elapsed = 0, entry.DrawAt = 1;
        chance_.Next = {draw};
        simulator_.TakeWrites();
        Tick(10);
        EXPECT_EQ(entry.Failed, fails) << "range 100 to below 200, draw " << draw;
        EXPECT_EQ(simulator_.TakeWrites().size(), fails) << "written in the same tick, " << draw;
        entry.Elapsed = 0;
        chance_.Next = {draw};
        Tick(10);
        EXPECT_EQ(FailureCount, fails) << "what has failed does not fail again, draw " << draw;
        ClearAllFailures(true);
    }
}

TEST_F(EngineTest, AFullyReliableSubsystemIsNeitherCountedNorDrawn) {
    MakeEverythingDue();
    Entry("AP(Mach)").Reliability = "100";
    Entry("AP(Master)").Reliability = "99.999";
    Tick(10);
    EXPECT_EQ(Entry("AP(Mach)").Elapsed, 0);
    EXPECT_FALSE(Entry("AP(Mach)").Failed);
    EXPECT_TRUE(Entry("AP(Master)").Failed);
    EXPECT_EQ(FailureCount, 61) << "everything else";
}

TEST_F(EngineTest, GearAndFlapsStartTheirPeriodAgainWhileTheyAreOut) {
    std::pair<std::uint32_t, const char*> parts[] = {{Gear, "Ctrl(Landing Gear)"},
                                                     {Flaps, "Ctrl(Flaps)"}};
    for (auto [offset, label] : parts)
        for (auto [value, isOut] :
             {std::pair{0, false}, {-1, false}, {1, true}, {8191, true}, {16383, true}}) {
            SetVariable(Gear, 4, 0);
            SetVariable(Flaps, 4, 0);
            SetVariable(offset, 4, value);
            SubsystemEntry& entry = Entry(label);
            entry.Elapsed = 3;
            MakeEverythingDue();
            Tick(10);
            EXPECT_EQ(entry.Failed, !isOut) << label << " at " << value;
            EXPECT_EQ(entry.Elapsed, isOut ? 0 : 4) << label << " at " << value;
            EXPECT_EQ(entry.DrawAt, isOut ? 1 : 4) << label << " at " << value;
            EXPECT_EQ(FailureCount, isOut ? 61 : 62) << "only " << label << " is out";
            ClearAllFailures(true);
        }
}

TEST_F(EngineTest, AnEngineBeyondTheCountIsNeitherCountedNorDrawn) {
    for (int count : {0, 1, 2, 3, 4, 0xFFFF}) {
        SetVariable(Engines, 2, count);
        ForEachSubsystem([](int, int, SubsystemEntry& entry) { entry.Elapsed = 0; });
        MakeEverythingDue();
        Tick(10);
        std::vector<std::string_view> wrong;
        ForEachSubsystem([&](int, int, const SubsystemEntry& entry) {
            bool drawn = entry.Engine <= count;
            if (entry.Failed != drawn || entry.Elapsed != drawn) wrong.push_back(entry.Name);
        });
        EXPECT_THAT(wrong, IsEmpty()) << "with " << count << " engines";
        ClearAllFailures(true);
    }
}

// --- Hotkeys -----------------------------------------------------------------------------------

class HotkeyTest : public EngineTest {
   protected:
    // True when the status hotkey acts with its key, CTRL and SHIFT in these states.
    bool Fires(std::int16_t key, std::int16_t ctrl, std::int16_t shift) {
        inprocess::SetKey('S', key);
        inprocess::SetKey(17, ctrl);
        inprocess::SetKey(16, shift);
        simulator_.TakeWrites();
        Tick();
        return !simulator_.TakeWrites().empty();
    }
};

TEST_F(HotkeyTest, TheModifiersOfTheCombinationMustBeDownAndOthersUp) {
    std::tuple<int, bool, bool> rows[] = {{0, false, false}, {1, true, false},   {2, false, true},
                                          {3, true, true},   {-1, false, false}, {4, false, false}};
    for (auto [mods, withCtrl, withShift] : rows)
        for (std::int16_t ctrl : {Clear, Tapped, Down, DownAndTapped})
            for (std::int16_t shift : {Clear, Tapped, Down, DownAndTapped}) {
                Settings.StatusHotkey = {'S', mods};
                bool matches = (withCtrl ? ctrl < 0 : ctrl == Clear) &&
                               (withShift ? shift < 0 : shift == Clear);
                EXPECT_EQ(Fires(Down, ctrl, shift), matches)
                    << "modifiers " << mods << ", CTRL " << ctrl << ", SHIFT " << shift;
            }
    Settings.StatusHotkey.Mods = 0;
    for (auto [key, fires] :
         {std::pair{Clear, false}, {Tapped, false}, {Down, true}, {DownAndTapped, true}})
        EXPECT_EQ(Fires(key, Clear, Clear), fires) << "key " << key;
    Settings.StatusHotkey.Key = 0;
    inprocess::SetKey(0, Down);
    EXPECT_FALSE(Fires(Down, Clear, Clear)) << "no hotkey";
}

TEST_F(HotkeyTest, AHeldKeyActsInEveryTickBeforeTheTickItself) {
    Settings.ActiveHotkey.Key = 'A';
    inprocess::SetKey('A', Down);
    for (const char* status :
         {"On hold (deactivated).", "Operational.", "On hold (deactivated)."}) {
        Tick();
        EXPECT_EQ(Caption(), status);
        EXPECT_THAT(Sounds(), ElementsAre(*status == 'O' && status[1] == 'n' ? "sound_warning.wav"
                                                                             : "sound_ok.wav"));
    }
}

TEST_F(HotkeyTest, TwoHotkeysOnOneKeyBothActStatusFirst) {
    Settings.StatusHotkey.Key = Settings.ClearHotkey.Key = 'S';
    Settings.DisplayFailures = true;
    Fail("Inst(Vacuum)");
    Fail("Ctrl(Flaps)");
    Tick();
    simulator_.TakeWrites();
    inprocess::SetKey('S', Down);
    Tick();
    EXPECT_THAT(simulator_.TakeWrites(),
                ElementsAre("0x3380 128 \"QM:  Operational.  2 failures... Ctrl(Flaps), "
                            "Inst(Vacuum)\" Message Text",
                            "0x32FA 2 5 Message Seconds", "0x0B73 1 1 Vacuum (failure flag)"));
    EXPECT_THAT(Failures(), ElementsAre("Inst(Vacuum)"));
    EXPECT_THAT(Sounds(), ElementsAre("sound_ok.wav"));
    Tick();
    Sounds();
    Tick();
    EXPECT_THAT(Sounds(), IsEmpty()) << "there is nothing to clear";
}

TEST_F(HotkeyTest, AlsoActWhileTheLinkIsDown) {
    Settings.StatusHotkey.Key = 'S', Settings.ActiveHotkey.Key = 'A';
    simulator_.Reply = 2;
    Tick(2);
    window_.Captions.clear();
    inprocess::SetKey('S', Down);
    inprocess::SetKey('A', Down);
    Tick();
    EXPECT_THAT(window_.Captions, ElementsAre(NoConnection));
    EXPECT_TRUE(EngineState.Deactivated);
}

}  // namespace

}  // namespace quirkmeter
