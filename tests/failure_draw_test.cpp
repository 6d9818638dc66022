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
        });
        ComputeFailureRanges();
    }

    // A draw step as it comes in flight, ten ticks after the last.
    void Step() {
        inprocess::AdvanceClock(10);
        DrawStep(0, 0);
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

// The flights of torture/hours check all the rest; this needs floating point as every processor has
// it, and texts that no user can enter.
TEST_F(FailureDrawTest, RangesHaveTheWidthOfTheReliability) {
    std::pair<const char*, int> widths[] = {{"100", 0},    {"99.999", 1}, {"99", 1000},
                                            {"90", 10000}, {"0", 100000}, {"x", 0}};
    for (auto [reliability, width] : widths) {
        SetAll(reliability, "y");  // unreadable: the default
        ForEachSubsystem([&](int, int, const SubsystemEntry& entry) {
            EXPECT_EQ(entry.RangeHigh - entry.RangeLow, width) << reliability;
            EXPECT_TRUE(1 <= entry.DrawAt && entry.DrawAt <= 360);
        });
    }
}

TEST_F(FailureDrawTest, EveryRunBeginsAtItsOwnClockReading) {
    std::set<std::int32_t> draws;
    for (int i = 0; i < 20; ++i) {
        inprocess::AdvanceClock(10);
        ResetRandom();
        draws.insert(RandomInRange(100000, 0));
    }
    EXPECT_GT(draws.size(), 15u);
}

// Where a processor keeps more digits than a double has, a period could end a step late.
TEST_F(FailureDrawTest, TenthsOfAnHourAreExact) {
    SubsystemEntry& entry = Catalogue[1][1];
    for (int tenths = 1; tenths <= 9; ++tenths) {
        entry.Reliability = "0";
        entry.Hours = "0." + std::to_string(tenths);
        entry.Elapsed = 36 * tenths - 2;
        Step();
        EXPECT_EQ(entry.Elapsed, 36 * tenths - 1) << tenths;
        Step();
        EXPECT_EQ(entry.Elapsed, 0) << tenths;
    }
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
