#include "engine/failure_draw.h"

#include <array>
#include <cmath>

#include "model/random.h"
#include "program_test.h"

namespace quirkmeter {
namespace {

constexpr int Subsystems = 62;

class FailureDrawTest : public ProgramTest {
   protected:
    FailureDrawTest() { Engine.EngineCount = 4; }

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

    SubsystemEntry& Entry(int s, int n) { return Catalogue[s][n]; }
};

using RandomTest = ProgramTest;

TEST_F(RandomTest, EveryNumberOfTheRangeIsAsLikely) {
    std::array<int, 10> counts{};
    for (int i = 0; i < 100000; ++i) {
        if (i % 62 == 0) inprocess::AdvanceClock(10);
        std::int32_t r = RandomInRange(4, -5);
        ASSERT_GE(r, -5);
        ASSERT_LE(r, 4);
        ++counts[static_cast<std::size_t>(r + 5)];
    }
    for (int count : counts) EXPECT_NEAR(count, 10000, 4 * std::sqrt(10000 * 0.9));
    EXPECT_EQ(RandomInRange(7, 7), 7);
    EXPECT_EQ(RandomInRange(0, 1), 1) << "an empty range gives its lower bound";
}

TEST_F(RandomTest, AnotherRunAtTheSameTimeOfDayDiffersOnceItsPastDiffers) {
    auto first = RandomInRange(1 << 30, 0);
    auto second = RandomInRange(1 << 30, 0);
    EXPECT_NE(first, second) << "within one clock reading the sequence goes on";
    inprocess::AdvanceClock(86400);
    auto nextDay = RandomInRange(1 << 30, 0);
    EXPECT_NE(nextDay, first);
    EXPECT_NE(nextDay, second);
}

TEST_F(FailureDrawTest, RangesHaveTheWidthOfTheReliability) {
    const std::pair<const char*, int> widths[] = {{"100", 0},    {"99.999", 1}, {"99", 1000},
                                                  {"90", 10000}, {"50", 50000}, {"0", 100000}};
    for (auto [reliability, width] : widths) {
        SetAll(reliability, "1");
        ForEachSubsystem([&](int, int, const SubsystemEntry& entry) {
            EXPECT_EQ(entry.RangeHigh - entry.RangeLow, width) << reliability;
            EXPECT_GE(entry.RangeLow, 0);
            EXPECT_LE(entry.RangeHigh, 100000);
            EXPECT_GE(entry.DrawAt, 1);
            EXPECT_LE(entry.DrawAt, 360);
        });
    }
}

TEST_F(FailureDrawTest, PeriodLengthIsRoundedToTheNearestStepHalfToEven) {
    // 0.0125 hours are 4.5 steps.
    SetAll("0", "0.0125");
    for (int i = 0; i < 200; ++i) {
        ComputeFailureRanges();
        EXPECT_LE(Entry(1, 1).DrawAt, 4);
    }
}

TEST_F(FailureDrawTest, OneDrawAPeriodAtItsStep) {
    SetAll("0", "1");
    Entry(1, 1).DrawAt = 200;
    Entry(1, 1).RangeLow = 0;
    Entry(1, 1).RangeHigh = 100001;
    for (int step = 1; step < 200; ++step) Step();
    EXPECT_FALSE(Entry(1, 1).Failed);
    Step();
    EXPECT_TRUE(Entry(1, 1).Failed);
    EXPECT_EQ(Entry(1, 1).Elapsed, 200);
    Entry(1, 1).DrawAt = 201;
    Step();
    for (int step = 202; step < 360; ++step) Step();
    EXPECT_EQ(Entry(1, 1).Elapsed, 359);
    Step();
    EXPECT_EQ(Entry(1, 1).Elapsed, 0);
    int pairs = 0;
    for (int row = 1; row <= FailureCount; ++row)
        pairs += FailureList[row].System == 1 && FailureList[row].SubSystem == 1;
    EXPECT_EQ(pairs, 1) << "a failed sub-system is never added again";
}

TEST_F(FailureDrawTest, GearAndFlapsWaitWhileOutAndMissingEnginesAreSkipped) {
    SetAll("0", "0.0");
    Engine.EngineCount = 2;
    Entry(1, 1).Reliability = "100";
    Entry(2, 5).Elapsed = 5;
    DrawStep(1, 0);
    EXPECT_FALSE(Entry(2, 5).Failed) << "gear";
    EXPECT_TRUE(Entry(2, 4).Failed);
    RemoveFailureRow(FindFailure(2, 4));
    DrawStep(1, 1);
    EXPECT_FALSE(Entry(2, 4).Failed) << "flaps";
    EXPECT_EQ(Entry(2, 5).Elapsed, 0);
    EXPECT_EQ(Entry(1, 1).Elapsed, 0) << "what cannot fail is not counted";
    EXPECT_FALSE(Entry(1, 1).Failed);
    EXPECT_FALSE(Entry(4, 5).Failed) << "engine 3";
    EXPECT_FALSE(Entry(3, 6).Failed) << "generator 4";
    EXPECT_EQ(FailureCount, 62 - 1 - 2 - 2 - 4);
    DrawStep(-1, 1);
    EXPECT_FALSE(Entry(2, 4).Failed) << "flaps";
    EXPECT_TRUE(Entry(2, 5).Failed);
}

TEST_F(FailureDrawTest, UnreadableTextsCountAsTheDefaults) {
    SetAll("x", "y");
    EXPECT_EQ(Entry(1, 1).RangeHigh - Entry(1, 1).RangeLow, 0);
    for (int i = 0; i < 400; ++i) Step();
    EXPECT_EQ(FailureCount, 0);
}

// The rate of failures over `periods` periods of all sub-systems together, against the width of the
// ranges, in standard deviations.
TEST_F(FailureDrawTest, FailuresComeAtTheRateOfTheirReliability) {
    struct Case {
        const char* Reliability;
        const char* Hours;
        int StepsPerPeriod;
        int Periods;
    };
    const Case cases[] = {
        {"99.999", "0.1", 36, 200000}, {"99", "0.1", 36, 100000}, {"90", "0.1", 36, 100000},
        {"50", "0.1", 36, 100000},     {"0", "0.1", 36, 100000},  {"99", "1", 360, 100000},
        {"90", "24", 8640, 2000},      {"99", "24", 8640, 2000},
    };
    for (const Case& c : cases) {
        ResetRandom();
        SetAll(c.Reliability, c.Hours);
        double p = (Entry(1, 1).RangeHigh - Entry(1, 1).RangeLow) / 100001.0;
        int rounds = (c.Periods + Subsystems - 1) / Subsystems;
        int failures = 0;
        for (int step = 0; step < rounds * c.StepsPerPeriod; ++step) {
            Step();
            failures += TakeFailures();
        }
        double draws = static_cast<double>(rounds) * Subsystems;
        double deviation = std::sqrt(draws * p * (1 - p));
        EXPECT_LE(std::abs(failures - draws * p), 4 * deviation + 1e-9)
            << c.Reliability << " over " << c.Hours << ": " << failures << " of " << draws;
        SetAll("100", "1");
        ForEachSubsystem([](int, int, SubsystemEntry& entry) { entry.Elapsed = 0; });
    }
}

TEST_F(FailureDrawTest, TheStepWithinThePeriodIsUniform) {
    SetAll("0", "0.1");
    std::array<int, 36> counts{};
    const int rounds = 2000;
    for (int round = 0; round < rounds; ++round)
        for (int& count : counts) {
            Step();
            count += TakeFailures();
        }
    double expected = rounds * Subsystems / 36.0;
    double chiSquare = 0;
    for (int count : counts) chiSquare += (count - expected) * (count - expected) / expected;
    // 35 degrees of freedom, four standard deviations.
    EXPECT_LT(chiSquare, 35 + 4 * std::sqrt(70));
    EXPECT_GT(chiSquare, 35 - 4 * std::sqrt(70)) << "too even to be chance";
}

TEST_F(FailureDrawTest, SubsystemsFailIndependentlyWithinAndAcrossSteps) {
    SetAll("50", "0.0");
    const double p = (Entry(1, 1).RangeHigh - Entry(1, 1).RangeLow) / 100001.0;
    const int steps = 20000;
    double sumOfSquares = 0, neighbours = 0, successors = 0;
    std::array<double, Subsystems> last{};
    for (int step = 0; step < steps; ++step) {
        Step();
        std::array<double, Subsystems> now{};
        std::size_t i = 0;
        double total = 0;
        ForEachSubsystem([&](int, int, const SubsystemEntry& entry) {
            now[i] = (entry.Failed ? 1 : 0) - p;
            total += now[i++];
        });
        sumOfSquares += total * total;
        for (i = 0; i + 1 < Subsystems; ++i) neighbours += now[i] * now[i + 1];
        for (i = 0; i < Subsystems; ++i) successors += now[i] * last[i];
        last = now;
        TakeFailures();
    }
    const double variance = p * (1 - p);
    // The number of failures of one step varies as that of independent sub-systems does.
    double expected = Subsystems * variance;
    EXPECT_NEAR(sumOfSquares / steps, expected, 4 * expected * std::sqrt(2.0 / steps));
    EXPECT_NEAR(neighbours, 0, 4 * variance * std::sqrt(steps * (Subsystems - 1.0)));
    EXPECT_NEAR(successors, 0, 4 * variance * std::sqrt(steps * static_cast<double>(Subsystems)));
}

}  // namespace
}  // namespace quirkmeter
