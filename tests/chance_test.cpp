// The program's random numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>
#include <vector>

#include "model/random.h"
#include "platform/inprocess/inprocess.h"

namespace quirkmeter {

namespace {

TEST(Chance, EveryRunIsSeededFromTheClock) {
    std::set<std::int32_t> draws;
    for (int i = 0; i < 20; ++i) {
        platform::inprocess::AdvanceClock(10);
        ResetRandom();
        draws.insert(RandomInRange(100000, 0));
    }
    EXPECT_GT(draws.size(), 15u);
}

// Pairs of consecutive draws, while the clock goes on. A difference from the expected count that is
// too small is a fault, too.
TEST(Chance, IsUniformAndIndependentOfEarlierDraws) {
    constexpr std::size_t Ways = 100, Each = 200;
    std::vector<double> counts(Ways * Ways);
    for (std::size_t draw = 0, last = 0; draw < Each * Ways * Ways; ++draw) {
        if (draw % 60 == 0) platform::inprocess::AdvanceClock(1);
        auto now = static_cast<std::size_t>(RandomInRange(Ways - 1, 0));
        ++counts.at(Ways * std::exchange(last, now) + now);
    }
    double chiSquare = 0;
    for (double count : counts) chiSquare += (count - Each) * (count - Each) / Each;
    double freedom = Ways * Ways - 1;
    EXPECT_NEAR(chiSquare, freedom, 4 * std::sqrt(2 * freedom));
}

TEST(Chance, BothBoundsAreDrawnAndAnEmptyRangeGivesItsLowBound) {
    std::set<std::int32_t> draws;
    for (int i = 0; i < 1000; ++i) draws.insert(RandomInRange(3, 1));
    EXPECT_EQ(draws, (std::set<std::int32_t>{1, 2, 3}));
    EXPECT_EQ(RandomInRange(0, 1), 1) << "a period of no draw step";
}

}  // namespace

}  // namespace quirkmeter
