#include "link/actuation.h"

#include <bit>
#include <span>

#include "hardcore/companion.h"
#include "program_test.h"

namespace quirkmeter {

namespace {

struct Subsystem {
    int System, Number;
};
constexpr Subsystem Aileron{2, 1}, Elevator{2, 2}, ElevatorTrim{2, 3}, Rudder{2, 6}, Throttle{2, 7},
    Battery{3, 1}, Engine1Fail{4, 1}, Engine1Stall{4, 2}, Engine3Fail{4, 5}, TankLeft{5, 3},
    TankRight{5, 6}, Airspeed{6, 1}, PitotStatic{6, 7}, Adf{7, 1};
using Write = SimWriteRecord;

class ActuationTest : public LinkedTest {
   protected:
    void Fail(std::initializer_list<Subsystem> subsystems) {
        for (auto [system, number] : subsystems) AddFailure(system, number);
    }
    std::vector<Write> Clear(Subsystem subsystem) {
        ClearFailure(subsystem.System, subsystem.Number);
        return simulator_.TakeWrites();
    }
    std::vector<Write> Maintain() {
        MaintainFailures();
        return simulator_.TakeWrites();
    }
};

TEST_F(ActuationTest, FailuresAreWrittenInOneBatchNewestFirst) {
    Maintain();
    Clear(Battery);
    EXPECT_EQ(simulator_.Batches, 0) << "nothing has failed";

    Fail({ElevatorTrim, PitotStatic, Engine1Fail, Battery, Engine3Fail, Elevator, Rudder});
    Maintain();
    EXPECT_THAT(Maintain(),
                ElementsAre(Write{0x310A, 1, 5}, Write{0x310A, 1, 5}, Write{0x0B6B, 1, 4},
                            Write{0x3102, 1, 0}, Write{0x0B6B, 1, 1}, Write{0x0B71, 1, 1},
                            Write{0x0BC0, 2, 0}));
    EXPECT_THAT(Clear(Battery), IsEmpty());
    EXPECT_THAT(Clear(Elevator), IsEmpty());
    EXPECT_EQ(simulator_.Batches, 2);
    EXPECT_THAT(Clear(Engine3Fail), ElementsAre(Write{0x0B6B, 1, 0})) << "a flag, at once";
    EXPECT_EQ(simulator_.Batches, 3);
    EXPECT_THAT(Maintain(), ElementsAre(Write{0x310A, 1, 4}, Write{0x0B6B, 1, 1},
                                        Write{0x0B71, 1, 1}, Write{0x0BC0, 2, 0}))
        << "what shares its byte comes back";
}

TEST_F(ActuationTest, EveryControlAndEveryEngineHasItsBit) {
    unsigned bit = 1;
    for (Subsystem control : {Elevator, Aileron, Rudder, Throttle}) {
        Subsystem engine{4, 2 * std::countr_zero(bit) + 1};
        Fail({control, engine});
        EXPECT_THAT(Maintain(), ElementsAre(Write{0x0B6B, 1, bit}, Write{0x310A, 1, bit}));
        Clear(control);
        Clear(engine);
        bit *= 2;
    }
}

TEST_F(ActuationTest, AStallIsWrittenOnceAndEndsByItself) {
    Fail({Battery, Engine1Stall});
    SimClose();
    Maintain();
    EXPECT_FALSE(FailureList[2].Started()) << "it could not be queued and will be tried again";
    std::int32_t result = 0;
    SimOpen(0, result);
    EXPECT_THAT(Maintain(), ElementsAre(Write{0x0890, 2, 0}, Write{0x3102, 1, 0}));
    for (int tick = 1; tick <= 29; ++tick) EXPECT_EQ(Maintain().size(), 1u);
    EXPECT_TRUE(Catalogue[4][2].Failed);
    Maintain();
    EXPECT_FALSE(Catalogue[4][2].Failed);
}

TEST_F(ActuationTest, ALeakDrainsItsTankFromTheNextTickOn) {
    simulator_.Space.SetValue(0x0B7C, 4, 25000);
    simulator_.Space.SetValue(0x0B94, 4, 0x80000000);  // negative levels count as empty
    Fail({TankRight, TankLeft, Battery});
    EXPECT_THAT(Maintain(), ElementsAre(Write{0x3102, 1, 0}));
    EXPECT_EQ(simulator_.Batches, 2) << "the switch travels with a leak's read";
    ASSERT_EQ(FailureCount, 2) << "the leak of an empty tank ends";
    std::int32_t amount = FailureList[1].Counter;
    EXPECT_THAT(amount, testing::AllOf(testing::Ge(5000), testing::Le(10000)));

    simulator_.Reply = 0;
    Maintain();
    simulator_.Reply = 1;
    simulator_.Batches = 0;
    Maintain();
    EXPECT_EQ(simulator_.Batches, 2);
    EXPECT_EQ(simulator_.Space.Value(0x0B7C, 4), static_cast<std::uint64_t>(25000 - amount));
    for (int tick = 0; tick < 5; ++tick) Maintain();
    EXPECT_EQ(simulator_.Space.Value(0x0B7C, 4), 0u);
    EXPECT_EQ(FailureCount, 2) << "an emptied tank goes on leaking";
}

TEST_F(ActuationTest, ARemovedRowTakesNothingElseWithIt) {
    Fail({Aileron, Engine1Stall, Adf});
    Maintain();
    std::vector expected = {FailureList[2], FailureList[3], FailureRow{}};
    Clear(Aileron);
    EXPECT_EQ(std::vector(FailureList + 1, FailureList + 4), expected);
    EXPECT_FALSE(Catalogue[2][1].Failed);
    EXPECT_THAT(Clear(Airspeed), IsEmpty()) << "not in the list, though the ADF is as number 1";
    for (int i = 0; i < 99; ++i) AddFailure(1, 1);
    EXPECT_EQ(FailureCount, 100) << "the list is full";
}

TEST_F(ActuationTest, ClearingRefreshesAndSoundsAndIsRefusedUnderTheLock) {
    ClearAllFailures(false);
    ClearLastFailure();
    EXPECT_THAT(window_.Refreshes, IsEmpty()) << "nothing has failed";
    Fail({Battery, Adf, Rudder});
    Settings.HardcoreActive = EngineState.Airborne = true;
    ClearAllFailures(false);
    ClearLastFailure();
    EXPECT_EQ(FailureCount, 3);
    EngineState.Airborne = false;
    ClearLastFailure();
    EXPECT_FALSE(Catalogue[2][6].Failed);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
    ClearAllFailures(true);
    EXPECT_THAT(window_.Refreshes, ElementsAre(true, false));
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty()) << "quiet";
    Fail({Battery});
    ClearAllFailures(false);
    EXPECT_THAT(inprocess::TakeSounds(), ElementsAre("sound_ok.wav"));
}

TEST_F(ActuationTest, LeavingAFlightUnderTheLockMovesTheAircraftToZeroThreeTimes) {
    Settings.HardcoreActive = true;
    LeaveFlight();
    EXPECT_EQ(simulator_.Batches, 0) << "on the ground";
    EngineState.Airborne = true;
    double start = inprocess::Elapsed();
    LeaveFlight();
    EXPECT_NEAR(inprocess::Elapsed() - start, 2, 1e-6);
    EXPECT_EQ(simulator_.Batches, 3 * 3);
    std::vector<Write> once = {{0x05DC, 2, 1}, {0x0560, 4, 0}, {0x0564, 4, 0}, {0x0568, 4, 0},
                               {0x056C, 4, 0}, {0x0570, 4, 0}, {0x0574, 4, 0}, {0x05DC, 2, 0}};
    ASSERT_EQ(simulator_.Writes.size(), 3 * once.size());
    EXPECT_TRUE(std::ranges::equal(once, std::span(simulator_.Writes).last(8)));
}

}  // namespace

}  // namespace quirkmeter
