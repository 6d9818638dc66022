// What of failures, messages and sounds the flights of torture/hours do not come to.
#include "link/actuation.h"

#include <span>

#include "hardcore/companion.h"
#include "link/sounds.h"
#include "link/status.h"
#include "program_test.h"

namespace quirkmeter {

namespace {

using Write = SimWriteRecord;

class ActuationTest : public LinkedTest {
   protected:
    std::string Show(const std::string& line) {
        EngineState.StatusText = line;
        ShowStatus(true);
        auto bytes = simulator_.Space.Bytes(0x3380, 128);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
};

TEST_F(ActuationTest, AValueThatIsNoBitIsWrittenAsItStands) {
    AddFailure(2, 6);
    MaintainFailures();
    WriteFailureValue(0x310A, 3, 1, FailureMode::Disconnect, 0);
    WriteFailureValue(0x0B6B, 1, 1, FailureMode::Flag, 5);
    WriteFailureValue(0x0B6C, 1, 2, FailureMode::Flag, 2);
    MaintainFailures();
    EXPECT_THAT(simulator_.Writes,
                ElementsAre(Write{0x310A, 1, 4}, Write{0x310A, 1, 4}, Write{0x0B6B, 1, 1},
                            Write{0x0B6C, 2, 1}, Write{0x310A, 1, 4}));
}

TEST_F(ActuationTest, WhatIsNotQueuedOrAnsweredIsTriedAgain) {
    AddFailure(4, 2);  // a stall
    AddFailure(5, 3);  // a leak
    SimClose();
    MaintainFailures();
    EXPECT_FALSE(FailureList[1].Started());
    std::int32_t result = 0;
    SimOpen(0, result);
    simulator_.Reply = 0;
    MaintainFailures();
    EXPECT_THAT(simulator_.Writes, ElementsAre(Write{0x0890, 2, 0}));
    EXPECT_EQ(FailureCount, 2) << "the tank may not be empty";
}

TEST_F(ActuationTest, ListOfFailuresIsFullAtAHundred) {
    for (int i = 0; i < 101; ++i) AddFailure(1, 1);
    EXPECT_EQ(FailureCount, 100);
}

TEST_F(ActuationTest, MessageIsCutAndSentWholeOrNotAtAll) {
    std::string cut = "QM:  " + std::string(122, 'x') + '\0';
    EXPECT_EQ(Show(std::string(300, 'x')), cut);
    EXPECT_EQ(simulator_.Batches, 1);
    std::int32_t result = 0;
    EXPECT_TRUE(SimRead(0, BlockUsed - 4 - 16 - 100, nullptr, result));
    EXPECT_EQ(Show("There is room for its seconds only."), cut);
    EXPECT_EQ(simulator_.Batches, 1);
}

TEST_F(ActuationTest, AMissingSoundIsSkipped) {
    std::filesystem::remove(folder_ / "sound_ok.wav");
    PlaySoundFile(SoundOk);
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty());
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
