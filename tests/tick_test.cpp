#include "engine/tick.h"

#include <tuple>

#include "engine/connection.h"
#include "engine/failure_draw.h"
#include "program_test.h"

namespace quirkmeter {

namespace {

class TickTest : public LinkedTest {
   protected:
    TickTest() {
        Settings.DisplayFailures = true;
        ComputeFailureRanges();
        simulator_.Space.SetValue(0x0366, 2, 0);  // airborne
    }

    std::string Tick(int count = 1) {
        for (int i = 0; i < count; ++i) {
            inprocess::AdvanceClock(1);
            EngineTick();
        }
        return window_.StatusCaption;
    }
};

TEST_F(TickTest, StatusLineSaysWhyItIsOnHold) {
    EXPECT_EQ(Tick(), "Operational.  No failures.");
    EXPECT_EQ(EngineState.EngineCount, 4);
    EXPECT_EQ(simulator_.Batches, 1);
    std::tuple<std::uint64_t, std::uint64_t, bool, std::string> holds[] = {
        {0x0100, 0, false, "(sim paused)"},
        {0, 1, false, "(not airborne)"},
        {1, 0x0100, true, "(sim paused)(not airborne)(deactivated)"},
        {0, 0, true, "(deactivated)"}};
    for (const auto& [pause, onGround, deactivated, why] : holds) {
        simulator_.Space.SetValue(0x0264, 2, pause);
        simulator_.Space.SetValue(0x0366, 2, onGround);
        EngineState.Deactivated = deactivated;
        EXPECT_EQ(Tick(), "On hold " + why + ".  No failures.");
        EXPECT_EQ(EngineState.DrawDivider, 1) << "as the first tick left it";
    }
    AddFailure(6, 9);
    AddFailure(4, 1);
    simulator_.Batches = 0;
    EXPECT_EQ(Tick(), "On hold (deactivated).  2 failures... Eng(Engine 1 (Fail)), Inst(Vacuum)");
    EXPECT_EQ(simulator_.Batches, 2);
    Settings.ActiveHotkey = 'A';
    inprocess::SetKey('A', -1);
    Settings.DisplayFailures = false;
    EXPECT_EQ(Tick(), "Operational.") << "a hotkey is in time for its tick";
}

TEST_F(TickTest, DrawnFailureIsInForceWithinTheTick) {
    Settings.PlayFailureSound = true;
    simulator_.Space.SetValue(0x0BE8, 4, 1);  // the gear
    simulator_.Space.SetValue(0x0BDC, 4, 1);  // the flaps
    for (auto [s, n] : {std::pair{6, 7}, {7, 1}, {2, 4}, {2, 5}}) {
        Catalogue[s][n].Reliability = "0";
        Catalogue[s][n].Hours = s == 2 ? "0" : "1";
        Catalogue[s][n].RangeLow = 0;
        Catalogue[s][n].RangeHigh = 100001;
        Catalogue[s][n].DrawAt = 1;
    }
    Tick(9);
    EXPECT_THAT(simulator_.TakeWrites(), IsEmpty());
    Tick();
    EXPECT_THAT(simulator_.TakeWrites(),
                ElementsAre(SimWriteRecord{0x0B64, 1, 1}, SimWriteRecord{0x0B71, 1, 1}));
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_failure.wav"));
    EXPECT_EQ(window_.StatusCaption, "Operational.  2 failures... Radio(ADF), Inst(Pitot Static)");
    Tick();
    EXPECT_EQ(simulator_.TakeWrites().size(), 2u) << "and stays in force";
    simulator_.Space.SetValue(0x0BE8, 4, 0);
    Tick(9);
    EXPECT_EQ(Catalogue[7][1].Elapsed, 2) << "a draw step takes ten ticks";
    EXPECT_THAT(window_.Refreshes, ElementsAre(true, true)) << "redrawn when there are more";
    EXPECT_TRUE(Catalogue[2][5].Failed && !Catalogue[2][4].Failed) << "the gear is up";
}

TEST_F(TickTest, FailureSoundNeedsARiseAndTheSetting) {
    AddFailure(6, 1);
    Tick();
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty()) << "switched off";
    Settings.PlayFailureSound = true;
    AddFailure(5, 2);  // an empty tank: it ends in this tick
    RemoveFailureRow(1);
    window_.Refreshes.clear();
    Tick();
    EXPECT_EQ(FailureCount, 0);
    EXPECT_THAT(window_.Refreshes, ElementsAre(true));
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty());
}

TEST_F(TickTest, LostLinkClearsFailuresAndComesBackByItself) {
    constexpr char NoConnection[] = "FSUIPC - No connection to Flight Simulator.";
    AddFailure(6, 1);
    AddFailure(2, 6);
    Tick();
    simulator_.Reply = 0;
    EXPECT_EQ(Tick(2), NoConnection);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_warning.wav")) << "retries are silent";
    EXPECT_EQ(FailureCount, 0);
    EXPECT_TRUE(EngineState.Airborne) << "the last reading stands";
    ConnectToSimulator(false);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_warning.wav")) << "as at the start";
    Settings.ActiveHotkey = 'A';
    inprocess::SetKey('A', -1);
    Tick(2);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_warning.wav", "sound_ok.wav"))
        << "hotkeys work without a link, at every tick";
    inprocess::SetKey('A', 0);

    simulator_.Reply = 1;
    EXPECT_EQ(Tick(), "Connected");
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
    ConnectToSimulator(false);
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty()) << "connected already";
    EXPECT_EQ(Tick(), "Operational.  No failures.");
    SimClose();  // the first read cannot even be queued
    EXPECT_EQ(Tick(), NoConnection);
    ConnectToSimulator(false);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_warning.wav", "sound_ok.wav"));
}

}  // namespace

}  // namespace quirkmeter
