#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <sstream>
#include <thread>
#include <vector>

#include "engine/program_state.h"
#include "link/actuation.h"
#include "link/sim_link.h"
#include "model/failure_list.h"
#include "platform/inprocess/inprocess.h"
#include "practice/command.h"
#include "practice/flight.h"
#include "practice/request_block.h"
#include "practice/simulator.h"
#include "practice/wire.h"
#include "practice/write_line.h"

namespace quirkmeter::practice {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

// A client's block of requests, in words. Zeros fill up data that are shorter than a word.
using Block = std::vector<std::uint32_t>;

bool CarryOut(
    Block& block, OffsetSpace& space, const WriteCallback& onWrite = [](auto&) {}) {
    return CarryOut(reinterpret_cast<std::byte*>(block.data()), 4 * block.size(), space, onWrite);
}

TEST(RequestBlock, CarriesOutRecordsInOrderAndLeavesHeadersAsTheyWere) {
    OffsetSpace space;
    space.SetValue(0x100, 4, 0x11223344);
    Block block = {1, 0x100, 4, 0xD15EA5E, 0, 2, 0x102, 4, 0xBEEF, 1, 0x100, 4, 0, 0, 0x70000};
    Block answered = {1,      0x100, 4,     0xD15EA5E, 0x11223344, 2,          0x102,  4,
                      0xBEEF, 1,     0x100, 4,         0,          0xBEEF3344, 0x70000};
    EXPECT_TRUE(CarryOut(block, space, [](const AppliedWrite& write) {
        EXPECT_EQ(write.Before, 0x1122u);
        EXPECT_EQ(WriteLine(12.3456, write), "12.346 0x0102 4 48879 ?");
    }));
    EXPECT_EQ(block, answered) << "only the low half of an identifier counts";
}

// A flight that records its events, and a client that sends it one write at a time.
class FlightTest : public ::testing::Test {
   protected:
    void Answer(Block& block) {
        EXPECT_TRUE(flight_.Answer(reinterpret_cast<std::byte*>(block.data()), 4 * block.size(),
                                   [](auto&) {}));
    }
    void Write(std::uint32_t offset, std::uint32_t size, std::uint64_t value) {
        Block block = {2, offset, size};
        block.resize(40);
        std::memcpy(&block[3], &value, std::min(size, 8u));
        Answer(block);
    }
    std::uint32_t Read(std::uint32_t offset, std::uint32_t size) {
        Block block = {1, offset, size, 0, 0, 0};
        Answer(block);
        return block[4];
    }
    std::vector<std::string> LitLamps() {
        std::vector<std::string> lit;
        for (const LampRow& row : flight_.View().Lamps)
            for (const Lamp& lamp : row.Lamps)
                if (lamp.State != Light::Dark) lit.push_back(lamp.Text);
        return lit;
    }

    std::vector<std::string> printed_;
    Flight flight_{{{5, {Verb::TakeOff}}}, [this](double time, const std::string& event) {
                       printed_.push_back(EventLine(time, event));
                   }};
};

TEST_F(FlightTest, TakesOffRetractsAndLandsAndShowsATextForItsSeconds) {
    Write(0x3380, 128, 'Q' | 'M' << 8);
    Write(0x32FA, 2, 5);
    flight_.Advance(4.875);
    EXPECT_EQ(flight_.View().ScreenText, "QM");
    flight_.Advance(60);
    EXPECT_EQ(flight_.View().ScreenText, "");
    EXPECT_EQ(Read(0x0BE8, 4), 0u);
    EXPECT_EQ(Read(0x0BDC, 4), 0u);
    EXPECT_LT(Read(0x125C, 4), 8388608u) << "fuel is burnt";
    EXPECT_THAT(printed_, ElementsAre("5.000 # took off", "9.000 # gear up", "13.000 # flaps up"));
    flight_.Apply({Verb::Land});
    EXPECT_NE(Read(0x0BE8, 4), 0u);
    EXPECT_NE(Read(0x0366, 2), 0u);
    EXPECT_NEAR(flight_.View().Altitude, 110, 1) << "landed";
}

TEST_F(FlightTest, AFailureIsInForceForAsLongAsItsWritesKeepComing) {
    Write(0x0928, 2, 0);
    Write(0x0B71, 1, 1);
    Write(0x0BE8, 4, 0);
    Write(0x0B84, 4, 4194304);
    for (int second = 0; second < 10; ++second) {
        flight_.Advance(second);
        Write(0x3102, 1, 0);
        Write(0x310A, 1, 4);
        EXPECT_EQ(Read(0x3102, 1), 0u);
    }
    flight_.Advance(11.375);
    EXPECT_EQ(Read(0x3102, 1), 0u);
    EXPECT_THAT(LitLamps(), ElementsAre("Rudder", "Battery", "Engine 2 (Stall)", "Pitot Static"));
    flight_.Advance(11.5);
    EXPECT_EQ(Read(0x3102, 1), 1u);
    EXPECT_EQ(Read(0x310A, 1), 0u);
    EXPECT_THAT(printed_, Contains("11.500 # pilot switched on Battery (electrical switch)"));
    flight_.Advance(29.875);
    EXPECT_EQ(Read(0x0928, 2), 0u);
    flight_.Advance(30);
    EXPECT_EQ(Read(0x0928, 2), 16384u);
    EXPECT_THAT(LitLamps(), ElementsAre("Pitot Static"));
}

TEST_F(FlightTest, BurnsFuelAndMovesOnlyWhileItFlies) {
    Write(0x0B7C, 4, 1);
    struct {
        Verb Told;
        bool Slew, Burns, Moves;
    } rows[] = {{Verb::Land, false, false, false},
                {Verb::TakeOff, false, true, true},
                {Verb::Pause, false, false, false},
                {Verb::Resume, true, true, false}};
    for (auto [told, slew, burns, moves] : rows) {
        flight_.Apply({told});
        Write(0x05DC, 2, slew);
        std::uint32_t level = Read(0x0B74, 4);
        double longitude = flight_.View().Longitude;
        flight_.Advance(flight_.Now() + 4);
        std::string rule = "on the ground";
        if (!printed_.empty()) rule = printed_.back();
        EXPECT_EQ(Read(0x0B74, 4) < level, burns) << rule;
        EXPECT_EQ(flight_.View().Longitude > longitude, moves) << rule;
    }
    EXPECT_EQ(Read(0x0B7C, 4), 0u) << "no tank holds less than nothing";
}

TEST_F(FlightTest, UnderstandsItsCommandsAndNothingElse) {
    std::pair<const char*, const char*> rows[] = {{"takeoff", "took off"},
                                                  {"pause", "paused"},
                                                  {"resume", "resumed"},
                                                  {" gear  down ", "gear down"},
                                                  {"gear up", "gear up"},
                                                  {"flaps down", "flaps down"},
                                                  {"flaps up", "flaps up"},
                                                  {"engines 0", "engines 0"},
                                                  {"engines 4", "engines 4"},
                                                  {"fuel 3 40", "fuel Left Aux 40 %"},
                                                  {"fuel 11 100", "fuel External 2 100 %"},
                                                  {"misbehave drop", "misbehave drop"},
                                                  {"misbehave none", "misbehave none"},
                                                  {"land", "landed"},
                                                  {"quit", "quit"}};
    for (auto [line, event] : rows) {
        auto command = ParseCommand(line);
        ASSERT_TRUE(command) << line;
        flight_.Apply(*command);
        EXPECT_EQ(printed_.back(), std::string("0.000 # ") + event) << line;
    }
    EXPECT_EQ(Read(0x0B84, 4), 3355444u) << "40 percent";
    for (const char* line :
         {"", "gear", "gear sideways", "takeoff now", "engines 5", "engines -1", "engines 2x",
          "fuel 0 1", "fuel 12 1", "fuel 1 101", "fuel 1", "misbehave badly", "Quit"})
        EXPECT_FALSE(ParseCommand(line)) << line;
}

// Compares two lists that were written independently: the practice simulator's variables and the
// program's catalogue.
TEST(Lamps, EveryFailureLightsTheLampOfItsNameAndNoOther) {
    platform::inprocess::Reset();
    ResetProgramState();
    BuildCatalogue();
    Flight flight({}, [](auto...) {});
    platform::OwnWindow("UIPCMAIN", "", [&](auto...) {
        return flight.Answer(SimLink.View, BlockSize, [](auto&) {});
    });
    std::int32_t result = 0;
    ASSERT_TRUE(SimOpen(0, result));
    auto lit = [&flight] {
        std::vector<std::string> texts;
        for (const LampRow& row : flight.View().Lamps)
            for (auto& [text, light] : row.Lamps)
                if (light != Light::Dark)
                    texts.push_back((light == Light::Red ? "red " : "amber ") +
                                    std::string(row.Title) + " " + text);
        return texts;
    };
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        bool red = entry.Mode == FailureMode::Disconnect || entry.Mode == FailureMode::Flag;
        AddFailure(s, n);
        for (int tick = 0; tick < 2; ++tick) MaintainFailures();
        EXPECT_THAT(lit(), ElementsAre((red ? "red" : "amber") + std::string(SystemTitles[s]) +
                                       " " + std::string(entry.Name)));
        ClearFailure(s, n);
        flight.Advance(flight.Now() + CutSeconds + 1);
        EXPECT_THAT(lit(), ElementsAre()) << "after clearing " << entry.Name;
    });
    ResetProgramState();
}

// The client acts whenever the simulator sleeps: it starts a misbehaviour, uses the open link and
// connects again.
TEST(Wire, EveryMisbehaviourIsEnteredAndLeft) {
    namespace inprocess = platform::inprocess;
    struct {
        Misbehaviour Kind;
        std::int32_t Written, Connected;
        double Seconds;
    } rows[] = {{Misbehaviour::None, SimNotOpen, SimOk, 0.1},
                {Misbehaviour::Silent, SimBadReply, SimOk, 3.1},  // until the test ends it
                {Misbehaviour::Late, SimOk, SimOk, 3.1},
                {Misbehaviour::None, SimOk, SimOk, 0.1},
                {Misbehaviour::Wrong, SimBadReply, SimBadReply, 0},
                {Misbehaviour::None, SimNotOpen, SimOk, 0.1},
                {Misbehaviour::Drop, SimSendFailed, SimNoWindow, 0},
                {Misbehaviour::None, SimNotOpen, SimOk, 0.1},
                {Misbehaviour::Old, SimOk, SimBadVersion, 0.1},
                {Misbehaviour::None, SimNotOpen, SimOk, 0.1}};
    inprocess::Reset();
    ResetProgramState();
    std::size_t writes = 0;
    Simulator simulator({}, std::numeric_limits<double>::infinity(), [&](const std::string& line) {
        writes += line.find(" 0x3102 1 0 Battery") != line.npos;
    });
    Wire wire(simulator, "UIPCMAIN");
    ASSERT_EQ(wire.Open(), "");
    auto* row = std::begin(rows);
    bool begun = false, acting = false;
    auto act = [&] {
        if (!std::exchange(begun, true))
            return simulator.Apply({Verb::Misbehave, static_cast<int>(row->Kind)});
        SCOPED_TRACE(MisbehaviourNames[static_cast<int>(row->Kind)]);
        double start = inprocess::Elapsed();
        std::int32_t result = 0;
        writes = 0;
        std::uint8_t off = 0;
        if (SimWrite(0x3102, 1, &off, result)) SimProcess(result);
        EXPECT_EQ(result, row->Written);
        EXPECT_EQ(writes, row->Written == SimOk) << "the batch is carried out or not";
        SimClose();
        SimInit();
        SimOpen(0, result);
        EXPECT_EQ(result, row->Connected);
        EXPECT_NEAR(inprocess::Elapsed() - start, row->Seconds, 0.06);
        begun = false;
        if (++row == std::end(rows)) simulator.End();
    };
    inprocess::WhenAsleep([&, silent = 0]() mutable {
        if (acting) {
            if (row->Kind == Misbehaviour::Silent && ++silent == 60)
                simulator.Apply({Verb::Misbehave});
            return;
        }
        acting = true;
        act();
        acting = false;
    });
    wire.Serve();
    EXPECT_EQ(row, std::end(rows));
    ResetProgramState();
    EXPECT_EQ(inprocess::HeldObjects(), 0) << "the window is dropped at the end";
}

TEST(Script, RunsItsLinesInTheOrderOfTheirTimes) {
    std::istringstream lines(
        "9 land\n\n2.5 takeoff\n  9 pause\n10 gear up\n11 gear down\n20 quit\n");
    int badLine = 0;
    auto script = ParseScript(lines, badLine);
    ASSERT_TRUE(script);
    std::string printed;
    Flight flight(*script, [&](double time, const std::string& event) {
        printed += EventLine(time, event) + '\n';
    });
    flight.Advance(20);
    EXPECT_EQ(
        printed,
        "2.500 # took off\n6.500 # gear up\n9.000 # gear down\n9.000 # flaps down\n"
        "9.000 # landed\n9.000 # paused\n10.000 # gear up\n11.000 # gear down\n20.000 # quit\n");
    EXPECT_TRUE(flight.Ended());

    std::istringstream badLines("1 land\n2 pause\n-1 quit\n");
    EXPECT_FALSE(ParseScript(badLines, badLine));
    EXPECT_EQ(badLine, 3);
}

// The thread sanitizer runs this test, too.
TEST(Simulator, CallsFromTwoThreadsAreSerialised) {
    constexpr int Turns = 1000;
    std::size_t lines = 0;
    Simulator simulator({}, std::numeric_limits<double>::infinity(), [&](auto&) { ++lines; });
    simulator.Start("ready");
    std::thread teller([&] {
        for (int i = 0; i < Turns; ++i) simulator.Apply({Verb::Gear, i % 2 == 0});
    });
    std::thread viewer([&] {
        for (int i = 0; i < Turns; ++i) simulator.View(), simulator.CurrentMisbehaviour();
    });
    for (int i = 0; i < Turns; ++i) {
        Block block = {2, 0x0892, 4, 0, 0};
        EXPECT_TRUE(simulator.Answer(reinterpret_cast<std::byte*>(block.data()), 4 * block.size()));
    }
    teller.join();
    viewer.join();
    simulator.End();
    EXPECT_TRUE(simulator.Ended());
    EXPECT_GE(lines, 1u + 2 * Turns);
}

}  // namespace

}  // namespace quirkmeter::practice
