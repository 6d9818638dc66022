// The catalogue, the failure list, failure ranges and number texts.
#include "model/failure_range.h"
#include "model/number_text.h"
#include "program_test.h"
#include "scripted_chance.h"

namespace quirkmeter {

namespace {

using testing::Pair;

using ModelTest = ProgramTest;

TEST_F(ModelTest, ASubsystemsNumbersAreItsPlaceInTheCatalogue) {
    std::vector<std::string> systems;
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        if (n == 1) systems.push_back(std::string(SystemNames[s]) + SystemTitles[s].data());
        systems.back().append(n == 1 ? ": " : ", ").append(entry.Name);
        auto engine = entry.Name.find("Engine ");
        EXPECT_EQ(entry.Engine, engine == entry.Name.npos ? 0 : entry.Name[engine + 7] - '0')
            << entry.Name;
        EXPECT_EQ(entry.Reliability.Text() + "#" + entry.Hours.Text(), "100#1") << entry.Name;
        EXPECT_EQ(entry.Elapsed, 0) << entry.Name;
    });
    EXPECT_THAT(
        systems,
        ElementsAre(
            "AP Autopilot: Airspeed, Altitude, Approach, Attitude, Autothrottle, Back Course, "
            "Glideslope, Heading, Mach, Master, Navigation, Vertical Speed, Wing Leveler, "
            "Yaw Damper",
            "Ctrl Control: Aileron, Elevator, Elevator Trim, Flaps, Landing Gear, Rudder, Throttle",
            "Elec Electrical: Battery, Entire System, Alt/Gen (Engine 1), Alt/Gen (Engine 2), "
            "Alt/Gen (Engine 3), Alt/Gen (Engine 4), Master Avionics",
            "Eng Engine: Engine 1 (Fail), Engine 1 (Stall), Engine 2 (Fail), Engine 2 (Stall), "
            "Engine 3 (Fail), Engine 3 (Stall), Engine 4 (Fail), Engine 4 (Stall)",
            "Fuel Fuel: Pump(s), Tank Center (Leak), Tank Left (Leak), Tank Left Aux (Leak), "
            "Tank Left Tip (Leak), Tank Right (Leak), Tank Right Aux (Leak), "
            "Tank Right Tip (Leak), Tank Center 2 (Leak), Tank Center 3 (Leak), "
            "Tank External 1 (Leak), Tank External 2 (Leak)",
            "Inst Instrument: Airspeed, Altimiter, Attitude, Fuel, Heading, Magnetic Compass, "
            "Pitot Static, Turn Coordinator, Vacuum, Vertical Speed",
            "Radio Radio: ADF, COM, NAV, Transponder"));
    int counts[] = {SubsystemCount(1), SubsystemCount(7), SubsystemCount(8), SubsystemCount(0)};
    EXPECT_THAT(counts, ElementsAre(14, 4, 0, 0));
}

TEST_F(ModelTest, RowsOfTheFailureListKeepTheirOrder) {
    for (const char* label : {"AP(Mach)", "Radio(COM)", "Eng(Engine 2 (Stall))"}) Fail(label);
    FailureList[3].Counter = 17;
    EXPECT_EQ(FindFailure(7, 2), 2);
    EXPECT_EQ(FindFailure(7, 3), 0);
    RemoveFailureRow(2);
    EXPECT_THAT(Failures(), ElementsAre("AP(Mach)", "Eng(Engine 2 (Stall))"));
    EXPECT_EQ(FailureList[2], (FailureRow{4, 4, 17})) << "a row moves up with its counter";
    EXPECT_EQ(FailureList[3], FailureRow{}) << "the row that was last is empty";
    EXPECT_FALSE(Entry("Radio(COM)").Failed);
    EXPECT_TRUE(Entry("AP(Mach)").Failed && Entry("Eng(Engine 2 (Stall))").Failed);
    while (FailureCount < 100) AddFailure(1, 1);
    AddFailure(1, 2);
    EXPECT_EQ(FailureCount, 100) << "the list is full at a hundred";
}

TEST_F(ModelTest, TheWidthOfAFailureRangeFollowsTheReliability) {
    std::tuple<const char*, int, int> rows[] = {
        {"100", 50000, 50000}, {"99.999", 50000, 50001}, {"99", 49500, 50500},
        {"90", 45000, 55000},  {"0.053", 27, 99974},  // as single precision rounds it
        {"0", 0, 100000}};
    for (auto [reliability, low, high] : rows) {
        SCOPED_TRACE(reliability);
        SubsystemEntry& entry = Catalogue[1][1];
        entry.Reliability = reliability;
        entry.Elapsed = 5;
        for (auto [coin, shift] : {std::pair{1, 0}, {1, low}, {2, 0}, {2, 100000 - high}}) {
            DrawScript chance;
            chance.Next = {coin, shift, 77};
            ComputeFailureRanges();
            int moved = coin == 1 ? -shift : shift;
            EXPECT_EQ(entry.RangeLow, low + moved) << "shifted by " << moved;
            EXPECT_EQ(entry.RangeHigh, high + moved) << "shifted by " << moved;
            EXPECT_EQ(entry.DrawAt, 77);
            chance.Asked.resize(3);
            EXPECT_THAT(
                chance.Asked,
                ElementsAre(Pair(2, 1), Pair(coin == 1 ? low : 100000 - high, 0), Pair(360, 1)));
        }
        EXPECT_EQ(entry.Elapsed, 5) << "a period under way goes on";
    }
}

TEST_F(ModelTest, TheDrawStepIsAnyStepOfTheRoundedPeriod) {
    std::pair<const char*, int> rows[] = {{"1", 360},    {"999", 359640}, {"0.5", 180},
                                          {"0.0125", 4}, {"0.0375", 14},  {"0", 0},
                                          {"0.001", 0},  {"x", 360}};
    for (auto [hours, steps] : rows) {
        DrawScript chance;
        chance.Next = {3};
        SubsystemEntry& entry = Catalogue[1][1];
        entry.Hours = hours;
        entry.Elapsed = 5;
        StartPeriod(entry);
        EXPECT_THAT(chance.Asked, ElementsAre(Pair(steps, 1))) << hours << " hours";
        EXPECT_EQ(entry.DrawAt, 3);
        EXPECT_EQ(entry.Elapsed, 0);
    }
}

TEST_F(ModelTest, NumbersAreWrittenInSinglePrecisionWithSevenDigits) {
    std::pair<float, const char*> texts[] = {
        {100.0f, "100"},         {99.999f, "99.999"},        {-0.0f, "0"},
        {33.33333f, "33.33333"}, {12.34567891f, "12.34568"}, {1.5e-10f, "0.00000000015"}};
    for (auto [value, text] : texts) EXPECT_EQ(NumberText(value), text);
    inprocess::SetDecimalSeparator(',');
    EXPECT_EQ(NumberText(99.999f), "99,999");
}

TEST_F(ModelTest, NumbersAreReadAndNothingElse) {
    std::pair<const char*, double> numbers[] = {{" 99.50 ", 99.5}, {"099.5", 99.5}, {"-1", -1},
                                                {"+5", 5},         {".5", 0.5},     {"5.", 5},
                                                {"1e1", 10},       {"1E-1", 0.1}};
    for (auto [text, value] : numbers) EXPECT_EQ(ReadNumber(text), value) << text;
    for (std::string_view text : {"", " ", ".", "nan", "inf", "0x10", "1e99", "1e", "1 2", "--1",
                                  "+-1", "1.2.3", "5%", "1,5", "\t1"})
        EXPECT_EQ(ReadNumber(text), std::nullopt) << text;
    inprocess::SetDecimalSeparator(',');
    EXPECT_EQ(ReadNumber("99,5"), 99.5);
    EXPECT_EQ(ReadNumber("99.5"), std::nullopt);
    EXPECT_EQ(ReadPointNumber("99.5"), 99.5);
}

}  // namespace

}  // namespace quirkmeter
