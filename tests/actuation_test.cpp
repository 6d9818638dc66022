#include "link/actuation.h"

#include "program_test.h"

namespace quirkmeter {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ActuationTest : public LinkedTest {
   protected:
    // The sub-system of that name; systems are searched from `system` on.
    std::pair<int, int> Find(std::string_view name, int system = 1) {
        std::pair<int, int> found{0, 0};
        ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
            if (found.first == 0 && s >= system && entry.Name == name) found = {s, n};
        });
        return found;
    }
    void Fail(std::string_view name, int system = 1) {
        auto [s, n] = Find(name, system);
        AddFailure(s, n);
    }
    void Clear(std::string_view name, int system = 1) {
        auto [s, n] = Find(name, system);
        ClearFailure(s, n);
    }
    std::vector<SimWriteRecord> Maintain() {
        MaintainFailures();
        return Simulator.TakeWrites();
    }
};

TEST_F(ActuationTest, NothingFailedSendsNothing) {
    EXPECT_THAT(Maintain(), IsEmpty());
    Clear("Battery");
    ClearAllFailures(false);
    ClearLastFailure();
    EXPECT_EQ(Simulator.Batches, 0);
    EXPECT_THAT(Window.Refreshes, IsEmpty());
}

TEST_F(ActuationTest, EveryModeIsWrittenInOneBatchNewestFirst) {
    Fail("Battery");
    Fail("Elevator Trim");
    Fail("Pitot Static");
    Fail("Engine 3 (Fail)");
    EXPECT_THAT(Maintain(),
                ElementsAre(SimWriteRecord{0x0B6B, 1, 4}, SimWriteRecord{0x0B71, 1, 1},
                            SimWriteRecord{0x0BC0, 2, 0}, SimWriteRecord{0x3102, 1, 0}));
    EXPECT_EQ(Simulator.Batches, 1);
}

TEST_F(ActuationTest, DisconnectionsShareOneByte) {
    Fail("Elevator");
    Fail("Rudder");
    Maintain();
    EXPECT_THAT(Maintain(),
                ElementsAre(SimWriteRecord{0x310A, 1, 5}, SimWriteRecord{0x310A, 1, 5}));
    Clear("Elevator");
    EXPECT_THAT(Simulator.TakeWrites(), IsEmpty());
    EXPECT_THAT(Maintain(), ElementsAre(SimWriteRecord{0x310A, 1, 4}));
    Clear("Rudder");
    EXPECT_THAT(Maintain(), IsEmpty());
}

TEST_F(ActuationTest, ClearedFlagIsWrittenAtOnceAndSharedEngineByteComesBack) {
    Fail("Engine 1 (Fail)");
    Fail("Engine 3 (Fail)");
    Fail("Battery");
    Maintain();
    Simulator.Batches = 0;
    Clear("Battery");
    EXPECT_EQ(Simulator.Batches, 0) << "a switch is left as it is";
    Clear("Engine 3 (Fail)");
    EXPECT_THAT(Simulator.TakeWrites(), ElementsAre(SimWriteRecord{0x0B6B, 1, 0}));
    EXPECT_EQ(Simulator.Batches, 1);
    EXPECT_THAT(Maintain(), ElementsAre(SimWriteRecord{0x0B6B, 1, 1}));
}

TEST_F(ActuationTest, StallIsWrittenOnceAndEndsByItself) {
    Fail("Battery");
    Fail("Engine 1 (Stall)");
    EXPECT_THAT(Maintain(),
                ElementsAre(SimWriteRecord{0x0890, 2, 0}, SimWriteRecord{0x3102, 1, 0}));
    EXPECT_EQ(FailureList[2].Counter, 30);
    for (int tick = 1; tick <= 29; ++tick) EXPECT_EQ(Maintain().size(), 1u);
    EXPECT_EQ(FailureList[2].Counter, 1);
    Maintain();
    EXPECT_EQ(FailureCount, 1);
    EXPECT_FALSE(Catalogue[4][2].Failed);
}

TEST_F(ActuationTest, StallThatCouldNotBeQueuedIsTriedAgain) {
    Fail("Engine 1 (Stall)");
    SimClose();
    Maintain();
    EXPECT_FALSE(FailureList[1].Started());
}

TEST_F(ActuationTest, LeakDrainsItsTankFromTheNextTickOn) {
    Simulator.Space.SetValue(0x0B7C, 4, 25000);
    Fail("Tank Left (Leak)");
    Fail("Battery");
    EXPECT_THAT(Maintain(), ElementsAre(SimWriteRecord{0x3102, 1, 0}));
    EXPECT_EQ(Simulator.Batches, 1)
        << "the switch travels with the leak's read, nothing is left over";
    std::int32_t amount = FailureList[1].Counter;
    EXPECT_THAT(amount, testing::AllOf(testing::Ge(5000), testing::Le(10000)));

    Simulator.Batches = 0;
    Maintain();
    EXPECT_EQ(Simulator.Batches, 2);
    EXPECT_EQ(Simulator.Space.Value(0x0B7C, 4), static_cast<std::uint64_t>(25000 - amount));
    for (int tick = 0; tick < 5; ++tick) Maintain();
    EXPECT_EQ(Simulator.Space.Value(0x0B7C, 4), 0u);
    EXPECT_EQ(FailureCount, 2) << "an emptied tank goes on leaking";
}

TEST_F(ActuationTest, LeakOfAnEmptyTankEndsAndAnUnreadTankIsLeftAlone) {
    Simulator.Space.SetValue(0x0B7C, 4, 25000);
    Fail("Tank Left (Leak)");
    Fail("Tank Right (Leak)");
    Maintain();
    EXPECT_EQ(FailureCount, 1);
    EXPECT_EQ(FailureList[1].SubSystem, 3);

    std::int32_t amount = FailureList[1].Counter;
    Simulator.Reply = 0;
    Simulator.TakeWrites();
    Maintain();
    Simulator.Reply = 1;
    EXPECT_EQ(FailureList[1].Counter, amount);
    EXPECT_EQ(Simulator.Space.Value(0x0B7C, 4), 25000u);

    Simulator.Space.SetValue(0x0B7C, 4, 0x80000000);  // negative levels count as empty
    Maintain();
    EXPECT_EQ(Simulator.Space.Value(0x0B7C, 4), 0u);
}

TEST_F(ActuationTest, EveryLeakTakesOneBatchMore) {
    ForEachSubsystem([this](int s, int n, const SubsystemEntry& entry) {
        if (entry.Mode == FailureMode::Leak)
            Simulator.Space.SetValue(static_cast<std::uint32_t>(entry.Offset), 4, 1 << 20);
        AddFailure(s, n);
    });
    EXPECT_EQ(FailureCount, 62);
    Maintain();
    EXPECT_EQ(Simulator.Batches, 12);
}

TEST_F(ActuationTest, RemovedRowTakesNothingElseWithIt) {
    Fail("Aileron");
    Fail("Engine 2 (Stall)");
    Fail("ADF");
    Maintain();
    FailureRow second = FailureList[2], third = FailureList[3];
    Clear("Aileron");
    EXPECT_EQ(FailureList[1], second);
    EXPECT_EQ(FailureList[2], third);
    EXPECT_EQ(FailureList[3], FailureRow{});
    EXPECT_EQ(FailureCount, 2);
    EXPECT_FALSE(Catalogue[2][1].Failed);
    Simulator.TakeWrites();
    Clear("Airspeed", 6);  // not in the list, though "ADF" has the same number in its system
    EXPECT_EQ(FailureCount, 2);
    EXPECT_THAT(Simulator.TakeWrites(), IsEmpty());
}

TEST_F(ActuationTest, ClearingRefreshesAndSounds) {
    InstallSounds();
    for (const char* name : {"Battery", "ADF", "Vacuum", "Throttle"}) Fail(name);
    ClearLastFailure();
    EXPECT_THAT(Window.Refreshes, ElementsAre(true));
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
    EXPECT_EQ(FailureCount, 3);
    EXPECT_FALSE(Catalogue[2][7].Failed);

    ClearAllFailures(true);
    EXPECT_EQ(FailureCount, 0);
    EXPECT_THAT(Window.Refreshes, ElementsAre(true, false));
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty());
    Fail("Battery");
    ClearAllFailures(false);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
}

TEST_F(ActuationTest, HardcoreLockRefusesClearing) {
    InstallSounds();
    Fail("Battery");
    Settings.HardcoreActive = Engine.Airborne = true;
    ClearAllFailures(false);
    ClearLastFailure();
    EXPECT_EQ(FailureCount, 1);
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty());
    Engine.Airborne = false;
    ClearLastFailure();
    EXPECT_EQ(FailureCount, 0);
}

TEST_F(ActuationTest, PositionResetSlewsToZeroInThreeBatches) {
    Simulator.Space.SetValue(0x0574, 4, 77);
    ZeroAircraftPosition();
    EXPECT_THAT(Simulator.TakeWrites(),
                ElementsAre(SimWriteRecord{0x05DC, 2, 1}, SimWriteRecord{0x0560, 4, 0},
                            SimWriteRecord{0x0564, 4, 0}, SimWriteRecord{0x0568, 4, 0},
                            SimWriteRecord{0x056C, 4, 0}, SimWriteRecord{0x0570, 4, 0},
                            SimWriteRecord{0x0574, 4, 0}, SimWriteRecord{0x05DC, 2, 0}));
    EXPECT_EQ(Simulator.Batches, 3);
}

}  // namespace
}  // namespace quirkmeter
