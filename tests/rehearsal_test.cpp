// Flights in simulated time against the calculated chances, and the report on them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <regex>

#include "engine/program_state.h"
#include "platform/inprocess/inprocess.h"
#include "rehearse/exact.h"
#include "rehearse/flight.h"
#include "rehearse/print.h"

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

    Report FlyAndReport() {
        Tally flown = Fly(plan_, [](double) { return true; });
        return MakeReport("a.qmp", plan_, flown, OrdinaryFlight(plan_, flown));
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
        Report report = FlyAndReport();
        EXPECT_EQ(std::ranges::count(report.Chances, true, &Report::Chance::TooFar), 0)
            << row.Reliability << "#" << row.Hours << "\n"
            << ChancesOf(report);
        EXPECT_THAT(Fly(plan_, [](double) { return true; }).MeanFailures(),
                    testing::DoubleNear(ExactFailures(plan_), 0.05 + 0.02 * ExactFailures(plan_)))
            << row.Reliability << "#" << row.Hours;
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
    SubsystemEntry& gear = Catalogue[2][5];
    gear.Reliability = "90";  // up for 49 minutes: from the first to ten before landing
    EXPECT_DOUBLE_EQ(ExactChance(gear, {.Hours = 1}), draw * 49 / 60);
    SubsystemEntry& stall = Catalogue[4][4];
    stall.Reliability = "90";
    EXPECT_DOUBLE_EQ(ExactChance(stall, {.Hours = 1, .Engines = 2}), draw);
    EXPECT_EQ(ExactChance(stall, {.Hours = 1, .Engines = 1}), 0);
}

TEST_F(RehearsalTest, AStallEndsAfterThirtyTicksAndComesAgain) {
    Catalogue[4][2].Reliability = "0";  // as good as certain at every draw
    Catalogue[4][2].Hours = "0";        // with a draw at every draw step
    plan_ = {.Hours = 0.1, .Flights = 1000};
    // A stall is in force at the next three draws, so one of every four of the 36 draw steps starts
    // one.
    EXPECT_NEAR(Fly(plan_, [](double) { return true; }).MeanFailures(), 9, 0.02);
}

TEST_F(RehearsalTest, TheSameSeedGivesTheSameFlightsAtAnyTime) {
    SetAll("95", "1");
    std::string flights = CsvOf(FlyAndReport());
    platform::inprocess::AdvanceClock(1);
    EXPECT_EQ(CsvOf(FlyAndReport()), flights);
    plan_.Seed = 2;
    EXPECT_NE(CsvOf(FlyAndReport()), flights);
}

TEST_F(RehearsalTest, TheOrdinaryFlightIsTheMiddleOneOfThoseWithFailures) {
    SetAll("90", "1");
    Tally flown = Fly(plan_, [](double) { return true; });
    Flight flight = OrdinaryFlight(plan_, flown);
    auto middle = flown.ByFailures.begin() + static_cast<std::ptrdiff_t>(flight.size());
    auto none = flown.ByFailures.begin();
    std::int64_t half = (flown.Flights - *none) / 2;
    EXPECT_LE(std::accumulate(none + 1, middle, std::int64_t{0}), half);
    EXPECT_LE(std::accumulate(middle + 1, flown.ByFailures.end(), std::int64_t{0}), half);
    EXPECT_TRUE(std::ranges::is_sorted(flight, {}, &FailureInFlight::Step));
    SetAll("100", "1");
    EXPECT_TRUE(OrdinaryFlight(plan_, Fly(plan_, [](double) { return true; })).empty());
}

TEST_F(RehearsalTest, FlightsStopOnRequest) {
    plan_.Flights = 1'000'000'000;
    double share = -1;
    Tally flown = Fly(plan_, [&share](double now) {
        share = now;
        return false;
    });
    EXPECT_GT(share, 0);
    EXPECT_DOUBLE_EQ(share, static_cast<double>(flown.Flights) / 1e9);
}

// A thousand of two thousand flights, with failures in two systems.
Tally TallyByHand() {
    Tally tally{.Flights = 1000, .Failures = 1100, .SquaredFailures = 9100};
    tally.ByFailures[0] = 600;
    tally.ByFailures[1] = 250;
    tally.ByFailures[2] = 100;
    tally.ByFailures[13] = 50;
    for (auto part : {10U, 20U, 50U, 80U}) tally.ByFirstFailure[part] = 100;
    tally.BySystem[1] = 300;
    tally.BySystem[6] = 150;
    tally.BySubsystem[1][10] = 300;
    tally.BySubsystem[6][4] = 12;
    tally.BySubsystem[6][9] = 120;
    return tally;
}

Report ReportByHand() {
    Catalogue[6][9].Reliability = "90";
    Report report =
        MakeReport("<a> & b.qmp", {.Hours = 1.5, .Flights = 2000, .Engines = 1, .Seed = 7},
                   TallyByHand(), {{84, 1, 10}, {360, 6, 9}});
    report.Made = "FS2002 Quirkmeter 1.0, 2026-12-31";
    return report;
}

class ReportTest : public RehearsalTest {
   protected:
    Report report_ = ReportByHand();
};

TEST_F(ReportTest, IsWrittenAsText) {
    EXPECT_EQ(
        TextOf(report_),
        R"(<a> & b.qmp: 1,000 flights of 1.5 hours with 1 engine, stopped before all of 2,000 were flown (seed 7)

A flight in which nothing fails  60.00 % (calculated: 85.50 %)
Failures in a flight             1.10 on average (calculated: 0.14), spread 2.81, at most 13
The first failure                by 0 h 19 min in half of the flights that have one (a quarter by 0 h 10 min, three quarters by 0 h 46 min)

Failures in a flight     flights  0 %                50 %             100 %
  0 to 1                 85.00 %  ##################################
  2 to 3                 10.00 %  ####
  4 to 5                  0.00 %
  6 to 7                  0.00 %
  8 to 9                  0.00 %
  10 to 11                0.00 %
  12 to 13                5.00 %  ##

Likeliest to fail       flights  calculated  0 %                50 %             100 %
  Autopilot - Master    30.00 %      0.00 %  ############
  Instrument - Vacuum   12.00 %     14.50 %  #####
  Instrument - Fuel      1.20 %      0.00 %

Systems        flights  calculated  0 %                50 %             100 %
  Autopilot    30.00 %      0.00 %  ############
  Control       0.00 %      0.00 %
  Electrical    0.00 %      0.00 %
  Engine        0.00 %      0.00 %
  Fuel          0.00 %      0.00 %
  Instrument   15.00 %     14.50 %  ######
  Radio         0.00 %      0.00 %

An ordinary flight with failures
  0 h 14 min  Autopilot - Master
   1 h 0 min  Instrument - Vacuum

FS2002 Quirkmeter 1.0, 2026-12-31
)");
}

TEST_F(ReportTest, IsWrittenAsAPage) {
    std::string page = PageOf(report_);
    EXPECT_TRUE(IsPage(page.substr(0, 1024)));
    EXPECT_FALSE(IsPage("<html><title>Rehearsal of a.qmp</title>"));
    EXPECT_THAT(page, testing::StartsWith("<!DOCTYPE HTML"));
    EXPECT_EQ(std::regex_replace(page.substr(std::min(page.size(), page.find("<title>"))),
                                 std::regex("<tr>[^\n]*width: 0.0%[^\n]*\n"), ""),
              R"(<title>Rehearsal of &lt;a> &amp; b.qmp</title>
</head>
<body>
<h1>Rehearsal of &lt;a> &amp; b.qmp</h1>
<p>1,000 flights of 1.5 hours with 1 engine, stopped before all of 2,000 were flown.</p>
<table summary="In short">
<tr><th scope="row">A flight in which nothing fails</th><td>60.00 % (calculated: 85.50 %)</td></tr>
<tr><th scope="row">Failures in a flight</th><td>1.10 on average (calculated: 0.14), spread 2.81, at most 13</td></tr>
<tr><th scope="row">The first failure</th><td>by 0 h 19 min in half of the flights that have one (a quarter by 0 h 10 min, three quarters by 0 h 46 min)</td></tr>
</table>
<h2>Failures in a flight</h2>
<table summary="Failures in a flight">
<tr><th scope="col">Failures</th><th scope="col" class="number">Flights</th><td class="scale"><span class="low">0 %</span><span class="high">100 %</span>50 %</td></tr>
<tr><th scope="row">0 to 1</th><td class="number">85.00 %</td><td class="bar"><div style="width: 85.0%"></div></td></tr>
<tr><th scope="row">2 to 3</th><td class="number">10.00 %</td><td class="bar"><div style="width: 10.0%"></div></td></tr>
<tr><th scope="row">12 to 13</th><td class="number">5.00 %</td><td class="bar"><div style="width: 5.0%"></div></td></tr>
</table>
<h2>Likeliest to fail</h2>
<table summary="Likeliest to fail">
<tr><th scope="col">Sub-system</th><th scope="col" class="number">Flights</th><th scope="col" class="number">Calculated</th><td class="scale"><span class="low">0 %</span><span class="high">100 %</span>50 %</td></tr>
<tr><th scope="row">Autopilot - Master</th><td class="number">30.00 %</td><td class="number">0.00 %</td><td class="bar"><div style="width: 30.0%"></div></td></tr>
<tr><th scope="row">Instrument - Vacuum</th><td class="number">12.00 %</td><td class="number">14.50 %</td><td class="bar"><div style="width: 12.0%"></div></td></tr>
<tr><th scope="row">Instrument - Fuel</th><td class="number">1.20 %</td><td class="number">0.00 %</td><td class="bar"><div style="width: 1.2%"></div></td></tr>
</table>
<h2>Systems</h2>
<table summary="Systems">
<tr><th scope="col">System</th><th scope="col" class="number">Flights</th><th scope="col" class="number">Calculated</th><td class="scale"><span class="low">0 %</span><span class="high">100 %</span>50 %</td></tr>
<tr><th scope="row">Autopilot</th><td class="number">30.00 %</td><td class="number">0.00 %</td><td class="bar"><div style="width: 30.0%"></div></td></tr>
<tr><th scope="row">Instrument</th><td class="number">15.00 %</td><td class="number">14.50 %</td><td class="bar"><div style="width: 15.0%"></div></td></tr>
</table>
<h2>An ordinary flight with failures</h2>
<table summary="An ordinary flight with failures">
<tr><th scope="row">0 h 14 min</th><td>Autopilot - Master</td></tr>
<tr><th scope="row">1 h 0 min</th><td>Instrument - Vacuum</td></tr>
</table>
<p class="note">Landing gear and flaps, which fail only while they are up, went up 1 min after take-off and came down 10 min before landing. The same flights again: seed 7.</p>
<p class="note">FS2002 Quirkmeter 1.0, 2026-12-31</p>
</body>
</html>
)");
}

TEST_F(ReportTest, IsWrittenAsCounts) {
    std::string csv = CsvOf(report_);
    EXPECT_EQ(std::ranges::count(csv, '\n'), 1 + 1 + 4 + 100 + 7 + 62);
    EXPECT_EQ(std::regex_replace(csv, std::regex("[^\n]*,0\n"), ""), R"(what,number,name,flights
all,,"",1000
failures,0,"",600
failures,1,"",250
failures,2,"",100
failures,13,"",50
first failure in hundredth,11,"",100
first failure in hundredth,21,"",100
first failure in hundredth,51,"",100
first failure in hundredth,81,"",100
system,1,"Autopilot",300
system,6,"Instrument",150
sub-system,1#10,"Autopilot - Master",300
sub-system,6#4,"Instrument - Fuel",12
sub-system,6#9,"Instrument - Vacuum",120
)");
}

TEST_F(ReportTest, ChancesBeyondFourStandardErrorsAreTooFar) {
    struct Row {
        const char* Reliability;
        std::int64_t Flights;  // of 1000 in which it failed
        bool TooFar;
    } rows[] = {
        {"90", 136, false},  // 100 are expected, with a standard error of 9.5
        {"90", 140, true},  {"90", 64, false},   {"90", 60, true},
        {"99.9", 6, false},  // 1 is expected: 5 standard errors, but not that rare
        {"99.9", 9, true},  {"0.1", 994, false}, {"0.1", 991, true},
        {"98", 1, true},  // 20 are expected
    };
    for (const Row& row : rows) {
        Catalogue[6][9].Reliability = row.Reliability;
        Tally tally{.Flights = 1000};
        tally.BySubsystem[6][9] = row.Flights;
        Report report = MakeReport("", {.Hours = 1}, tally, {});
        auto vacuum =
            std::ranges::find(report.Chances, "Instrument - Vacuum", &Report::Chance::Name);
        EXPECT_EQ(vacuum->TooFar, row.TooFar) << row.Reliability << " " << row.Flights << "\n"
                                              << ChancesOf(report);
    }
    EXPECT_THAT(ChancesOf(report_), HasSubstr("Nothing fails                         85.50 %      "
                                              "60.00 %           -22.90  too far\n"));
}

}  // namespace

}  // namespace quirkmeter::rehearse
