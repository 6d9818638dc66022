// What of chance, failures and messages the flights of torture/hours do not come to.
#include <cmath>
#include <set>
#include <span>
#include <utility>

#include "engine/failure_draw.h"
#include "hardcore/companion.h"
#include "link/actuation.h"
#include "link/status.h"
#include "model/random.h"
#include "program_test.h"

namespace quirkmeter {

namespace {

using Write = SimWriteRecord;
using ChanceTest = ProgramTest;

TEST_F(ChanceTest, EveryRunBeginsAtItsOwnClockReading) {
    std::set<std::int32_t> draws;
    for (int i = 0; i < 20; ++i) {
        inprocess::AdvanceClock(10);
        ResetRandom();
        draws.insert(RandomInRange(100000, 0));
    }
    EXPECT_GT(draws.size(), 15u);
}

// Where a processor keeps more digits than a double has, a period could end a step late.
TEST_F(ChanceTest, TenthsOfAnHourAreExact) {
    SubsystemEntry& entry = Catalogue[1][1];
    for (int tenths = 1; tenths <= 9; ++tenths) {
        entry.Reliability = "0";
        entry.Hours = "0." + std::to_string(tenths);
        entry.Elapsed = 36 * tenths - 2;
        DrawStep(0, 0);
        EXPECT_EQ(entry.Elapsed, 36 * tenths - 1) << tenths;
        DrawStep(0, 0);
        EXPECT_EQ(entry.Elapsed, 0) << tenths;
    }
}

// Pairs of numbers drawn one after the other, while the clock goes on. Fewer differences than those
// of chance would be too even.
TEST_F(ChanceTest, ChanceIsEvenAndForgetsWhatWasDrawn) {
    constexpr std::size_t Ways = 100, Each = 200;
    std::vector<double> counts(Ways * Ways);
    for (std::size_t draw = 0, last = 0; draw < Each * Ways * Ways; ++draw) {
        if (draw % 60 == 0) inprocess::AdvanceClock(1);
        auto now = static_cast<std::size_t>(RandomInRange(Ways - 1, 0));
        ++counts.at(Ways * std::exchange(last, now) + now);
    }
    double chiSquare = 0;
    for (double count : counts) chiSquare += (count - Each) * (count - Each) / Each;
    double freedom = Ways * Ways - 1;
    EXPECT_NEAR(chiSquare, freedom, 4 * std::sqrt(2 * freedom));
}

class ActuationTest : public LinkedTest {
   protected:
    std::string Show(const std::string& line) {
        EngineState.StatusText = line;
        ShowStatus(true);
        auto bytes = simulator_.Space.Bytes(0x3380, 128);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
};

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
