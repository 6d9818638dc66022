#include "engine/failure_draw.h"

#include <cmath>
#include <numeric>
#include <set>
#include <tuple>
#include <utility>

#include "model/random.h"
#include "program_test.h"

namespace quirkmeter {

namespace {

constexpr int Subsystems = 62;

class FailureDrawTest : public ProgramTest {
   protected:
    FailureDrawTest() { EngineState.EngineCount = 4; }

    void SetAll(const std::string& reliability, const std::string& hours) {
        ForEachSubsystem([&](int, int, SubsystemEntry& entry) {
            entry.Reliability = reliability;
            entry.Hours = hours;
            entry.Elapsed = 0;
        });
        ComputeFailureRanges();
    }

    // A draw step as it comes in flight, ten ticks after the last.
    void Step(int count = 1) {
        for (int i = 0; i < count; ++i) {
            inprocess::AdvanceClock(10);
            DrawStep(0, 0);
        }
    }

    // Takes the failures out of the list, so that the sub-systems can fail again.
    int TakeFailures() {
        int count = FailureCount;
        while (FailureCount > 0) RemoveFailureRow(FailureCount);
        return count;
    }

    // How often one draw fails, by the width of the ranges.
    double Chance() { return (Catalogue[1][1].RangeHigh - Catalogue[1][1].RangeLow) / 100001.0; }
};

TEST_F(FailureDrawTest, RangesHaveTheWidthOfTheReliabilityAndLieAnywhere) {
    std::pair<const char*, int> widths[] = {{"100", 0},    {"99.999", 1}, {"99", 1000},
                                            {"90", 10000}, {"0", 100000}, {"x", 0}};
    for (auto [reliability, width] : widths) {
        SetAll(reliability, "y");  // unreadable: the default
        std::int32_t lowest = 100000, highest = 0;
        ForEachSubsystem([&](int, int, const SubsystemEntry& entry) {
            EXPECT_EQ(entry.RangeHigh - entry.RangeLow, width) << reliability;
            EXPECT_TRUE(1 <= entry.DrawAt && entry.DrawAt <= 360);
            lowest = std::min(lowest, entry.RangeLow);
            highest = std::max(highest, entry.RangeHigh);
        });
        EXPECT_TRUE(0 <= lowest && lowest < 15000) << lowest;
        EXPECT_TRUE(85000 < highest && highest <= 100000) << highest;
    }
    Step(400);
    EXPECT_EQ(FailureCount, 0);
}

// Ranges of one number at and beside the one that the draw is going to give.
TEST_F(FailureDrawTest, ADrawFailsFromTheLowEndToBelowTheHighOne) {
    SubsystemEntry& entry = Catalogue[1][1];
    entry.Reliability = "0";
    entry.DrawAt = 1;
    std::set<std::int32_t> draws;
    for (int i = 0; i < 20; ++i) {
        inprocess::AdvanceClock(10);
        ResetRandom();
        std::int32_t r = RandomInRange(100000, 0);
        draws.insert(r);
        for (int low : {-1, 0, 1}) {
            entry.RangeLow = r + low;
            entry.RangeHigh = r + low + 1;
            entry.Elapsed = 0;
            ResetRandom();
            DrawStep(0, 0);
            EXPECT_EQ(TakeFailures(), low == 0) << r << ' ' << low;
        }
    }
    EXPECT_GT(draws.size(), 15u) << "every run begins at its own clock reading";
}

TEST_F(FailureDrawTest, OneDrawAPeriodAtItsStep) {
    SubsystemEntry& entry = Catalogue[1][1];
    entry.Reliability = "0";
    entry.DrawAt = 200;
    entry.RangeHigh = 100001;
    Step(199);
    EXPECT_FALSE(entry.Failed);
    Step();
    EXPECT_TRUE(entry.Failed);
    entry.DrawAt = 201;
    Step();
    EXPECT_EQ(FailureCount, 1) << "a failed sub-system is never added again";
    TakeFailures();
    Step(158);
    EXPECT_EQ(entry.Elapsed, 359);
    Step();
    EXPECT_EQ(entry.Elapsed, 0);
    EXPECT_EQ(FailureCount, 0);
    // 0.0125 hours are 4.5 steps: half to even.
    entry.Hours = "0.0125";
    entry.Elapsed = 3;
    for (int i = 0; i < 200; ++i) {
        ComputeFailureRanges();
        EXPECT_LE(entry.DrawAt, 4);
    }
    EXPECT_EQ(entry.Elapsed, 3) << "the period goes on";
}

TEST_F(FailureDrawTest, GearAndFlapsWaitWhileOutAndMissingEnginesAreSkipped) {
    SetAll("0", "0.0");
    EngineState.EngineCount = 2;
    const SubsystemEntry& flaps = Catalogue[2][4];
    SubsystemEntry& gear = Catalogue[2][5];
    Catalogue[1][1].Reliability = "100";
    gear.Elapsed = 5;
    DrawStep(1, 0);
    EXPECT_EQ(gear.Elapsed, 0);
    EXPECT_TRUE(flaps.Failed);
    EXPECT_EQ(Catalogue[1][1].Elapsed, 0) << "what cannot fail is not counted";
    EXPECT_EQ(TakeFailures(), 62 - 1 - 1 - 2 - 4) << "all but this, the gear and engines 3 and 4";
    DrawStep(-1, 1);
    EXPECT_FALSE(flaps.Failed);
    EXPECT_TRUE(gear.Failed);
}

// Within four standard deviations.
TEST_F(FailureDrawTest, FailuresComeAtTheRateOfTheirReliabilityAtAnyStep) {
    std::tuple<const char*, const char*, int, std::size_t> cases[] = {
        {"99.999", "0.0", 40000, 1}, {"99", "0.0", 10000, 1}, {"0", "0.1", 1000, 36}};
    for (auto [reliability, hours, periods, stepsPerPeriod] : cases) {
        SCOPED_TRACE(reliability);
        SetAll(reliability, hours);
        std::vector<double> failures(stepsPerPeriod);
        for (int period = 0; period < periods; ++period)
            for (double& count : failures) {
                Step();
                count += TakeFailures();
            }
        double expected = periods * Subsystems * Chance();
        double all = std::accumulate(failures.begin(), failures.end(), 0.0);
        EXPECT_NEAR(all, expected, 4 * std::sqrt(expected * (1 - Chance())));
        double each = all / static_cast<double>(stepsPerPeriod), chiSquare = 0;
        for (double count : failures) chiSquare += (count - each) * (count - each) / each;
        // Less would be too even to be chance.
        double freedom = static_cast<double>(stepsPerPeriod) - 1;
        EXPECT_NEAR(chiSquare, freedom, 4 * std::sqrt(2 * freedom));
    }
}

// The number of failures of one step varies as that of independent sub-systems does, and says
// nothing of the next.
TEST_F(FailureDrawTest, SubsystemsFailIndependentlyWithinAndAcrossSteps) {
    SetAll("50", "0.0");
    int steps = 20000;
    double squares = 0, products = 0, last = 0;
    for (int step = 0; step < steps; ++step) {
        Step();
        double now = TakeFailures() - Subsystems * Chance();
        squares += now * now;
        products += now * std::exchange(last, now);
    }
    double variance = Subsystems * Chance() * (1 - Chance());
    EXPECT_NEAR(squares / steps, variance, 4 * variance * std::sqrt(2.0 / steps));
    EXPECT_NEAR(products / steps, 0, 4 * variance * std::sqrt(1.0 / steps));
}

}  // namespace

}  // namespace quirkmeter
