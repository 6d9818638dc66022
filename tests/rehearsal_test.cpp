// Flights in simulated time against the calculated chances, and what is said of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "engine/program_state.h"
#include "platform/inprocess/inprocess.h"
#include "rehearse/exact.h"
#include "rehearse/flight.h"
#include "rehearse/report.h"

namespace quirkmeter::rehearse {

namespace {

using testing::HasSubstr;

class RehearsalTest : public testing::Test {
   protected:
    RehearsalTest() {
        platform::inprocess::Reset();
        ResetProgramState();
        BuildCatalogue();
    }

    void SetAll(const char* reliability, const char* hours) {
        ForEachSubsystem([&](int, int, SubsystemEntry& entry) {
            entry.Reliability = reliability;
            entry.Hours = hours;
        });
    }

    Tally Fly() {
        Tally tally;
        RehearsalAircraft aircraft(plan_);
        for (std::int64_t batch = 0; batch < Batches(plan_); ++batch)
            aircraft.FlyBatch(batch, tally);
        return tally;
    }

    FlightPlan plan_{.Flights = 2000, .Seed = 1};
};

TEST_F(RehearsalTest, FlightsFailAsOftenAsCalculated) {
    struct Row {
        const char *Reliability, *Hours;
        FlightPlan Plan;
    } rows[] = {
        {"90", "1", {.Hours = 2, .Engines = 2}},
        {"50", "10", {.Hours = 2.51, .Engines = 4}},  // less than a period
        {"20", "0.7", {.Hours = 1.5, .Engines = 1}},  // a part of a period at the end
        {"99.9", "0", {.Hours = 0.5, .Engines = 3}},  // a period of one draw step
        {"99",
         "0.004",
         {.Hours = 0.5, .Engines = 3}},  // two steps, of which the first has the draw
        {"95", "0.0045", {.Hours = 0.1, .Engines = 0}},
        {"0", "1", {.Hours = 0.3, .RetractedAfterTakeOff = 5, .ExtendedBeforeLanding = 3}},
        {"0", "1", {.Hours = 0.1}},  // too short for the gear to be up
    };
    for (Row& row : rows) {
        SetAll(row.Reliability, row.Hours);
        plan_ = row.Plan;
        plan_.Flights = 2000;
        Comparison comparison = Compare({"", plan_, Fly()});
        EXPECT_EQ(comparison.Beyond, 0) << row.Reliability << "#" << row.Hours << "\n"
                                        << comparison.Text;
    }
}

TEST_F(RehearsalTest, ExactChancesAreThoseOfTheRules) {
    SubsystemEntry& entry = Catalogue[1][1];
    entry.Reliability = "90";
    entry.Hours = "1";
    double draw = 10000.0 / 100001;
    EXPECT_DOUBLE_EQ(ExactChance(entry, {.Hours = 1}), draw);
    EXPECT_DOUBLE_EQ(ExactChance(entry, {.Hours = 0.25}), draw / 4);
    EXPECT_DOUBLE_EQ(ExactChance(entry, {.Hours = 2}), 1 - (1 - draw) * (1 - draw));
    EXPECT_DOUBLE_EQ(ExactChanceOfNoFailure({.Hours = 1}), 1 - draw);
    entry.Reliability = "99.999";
    EXPECT_NEAR(ExactChance(entry, {.Hours = 1}), 1.0 / 100001, 1e-12);
}

TEST_F(RehearsalTest, AStallEndsByItselfAndComesAgain) {
    Catalogue[4][2].Reliability = "0";
    Catalogue[4][2].Hours = "0.01";  // four draw steps; a stall lasts for three
    plan_.Hours = 1;
    plan_.Flights = 100;
    Tally tally = Fly();
    EXPECT_EQ(tally.BySubsystem[4][2], 100);
    EXPECT_GT(tally.MeanFailures(), 50);
}

TEST_F(RehearsalTest, TheFlightsOfASeedAreTheSameInAnyOrder) {
    SetAll("95", "1");
    Tally all = Fly(), parts;
    {
        RehearsalAircraft aircraft(plan_);
        for (std::int64_t batch = Batches(plan_); batch-- > 0;) aircraft.FlyBatch(batch, parts);
    }
    EXPECT_TRUE(std::ranges::equal(all.Counts(), parts.Counts()));
    plan_.Seed = 2;
    EXPECT_FALSE(std::ranges::equal(all.Counts(), Fly().Counts()));
}

TEST_F(RehearsalTest, ReportsSayWhatHappened) {
    Catalogue[6][9].Reliability = "0";
    plan_ = {.Hours = 1, .Flights = 1000, .Seed = 7};
    Rehearsal rehearsal{"<a> & b.qmp", plan_, Fly()};
    EXPECT_THAT(TextReport(rehearsal),
                HasSubstr("1,000 flights of 1 hour with 2 engines (seed 7)"));
    EXPECT_THAT(TextReport(rehearsal), HasSubstr("  Instrument - Vacuum    100.0 %  ####"));
    EXPECT_THAT(HtmlReport(rehearsal), HasSubstr("<h1>Rehearsal of &lt;a> &amp; b.qmp</h1>"));
    EXPECT_THAT(CsvReport(rehearsal), HasSubstr("\nsub-system,6#9,\"Instrument - Vacuum\",1000\n"));
    EXPECT_THAT(CsvReport(rehearsal), HasSubstr("\nfailures,1,\"\",1000\n"));
    EXPECT_NEAR(rehearsal.Flown.FirstFailureBy(0.25), 0.25, 0.05);
    EXPECT_EQ(rehearsal.Flown.SpreadOfFailures(), 0);
    rehearsal.Flown.BySubsystem[6][9] -= 1;
    EXPECT_EQ(Compare(rehearsal).Beyond, 1);
}

}  // namespace

}  // namespace quirkmeter::rehearse
