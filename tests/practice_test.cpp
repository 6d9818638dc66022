#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sstream>
#include <vector>

#include "practice/command.h"
#include "practice/flight.h"
#include "practice/request_block.h"
#include "practice/write_line.h"

namespace quirkmeter::practice {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A client's block, put together record by record in memory of exactly its size.
class Block {
   public:
    Block& Word(std::uint32_t word) {
        for (int i = 0; i < 4; ++i) bytes_.push_back(static_cast<std::byte>(word >> 8 * i));
        return *this;
    }
    Block& Read(std::uint32_t offset, std::uint32_t size) {
        Word(1).Word(offset).Word(size).Word(0xD15EA5E);
        bytes_.resize(bytes_.size() + size);
        return *this;
    }
    Block& Write(std::uint32_t offset, std::uint32_t size, std::uint64_t value) {
        Word(2).Word(offset).Word(size);
        for (std::uint32_t i = 0; i < size; ++i) {
            bytes_.push_back(static_cast<std::byte>(i < 8 ? value >> 8 * i : 0));
        }
        return *this;
    }
    Block& WriteText(std::uint32_t offset, std::uint32_t size, const std::string& text) {
        Write(offset, size, 0);
        std::memcpy(&bytes_[bytes_.size() - size], text.data(), text.size());
        return *this;
    }
    std::vector<std::byte>& Bytes() { return bytes_; }
    std::uint32_t WordAt(std::size_t at) const {
        std::uint32_t word = 0;
        std::memcpy(&word, &bytes_[at], 4);
        return word;
    }

   private:
    std::vector<std::byte> bytes_;
};

bool CarryOut(Block& block, OffsetSpace& space) {
    return CarryOut(block.Bytes().data(), block.Bytes().size(), space, [](const AppliedWrite&) {});
}

TEST(RequestBlock, CarriesOutRecordsInOrderAndLeavesHeadersAsTheyWere) {
    OffsetSpace space;
    space.SetValue(0x100, 4, 0x11223344);
    Block block;
    block.Read(0x100, 4).Write(0x100, 2, 0xBEEF).Read(0x100, 4).Word(0x70000);  // low half counts
    const Block sent = block;

    std::vector<std::string> lines;
    EXPECT_TRUE(
        CarryOut(block.Bytes().data(), block.Bytes().size(), space, [&](const AppliedWrite& write) {
            EXPECT_EQ(write.before, 0x3344u);
            lines.push_back(WriteLine(1, write));
        }));

    EXPECT_EQ(block.WordAt(16), 0x11223344u);
    EXPECT_EQ(block.WordAt(50), 0x1122BEEFu);
    EXPECT_THAT(lines, ElementsAre("1.000 0x0100 2 48879 ?"));
    for (const std::size_t header : {0, 4, 8, 12, 20, 24, 28, 34, 38, 42, 46, 54}) {
        EXPECT_EQ(block.WordAt(header), sent.WordAt(header)) << "at " << header;
    }
}

TEST(RequestBlock, RefusesAMalformedBlockButKeepsWhatCameBefore) {
    const auto good = [] { return Block().Write(0x200, 1, 7); };
    const std::vector<Block> blocks = {
        good(),                                                              // no end
        good().Word(3).Word(0x10).Word(0).Word(0),                           // unknown record
        good().Word(1).Word(0x10).Word(4),                                   // cut within a header
        good().Word(2).Word(0x10).Word(1),                                   // cut before the data
        good().Word(1).Word(0x10).Word(0xFFFFFFFF).Word(0).Word(0),          // size -1
        good().Word(1).Word(0x10).Word(0x80000000).Word(0).Word(0),          // lowest size
        good().Word(2).Word(0xFFFFFFFF).Word(4).Word(0).Word(0),             // offset -1
        good().Word(2).Word(0xFFFD).Word(4).Word(0).Word(0),                 // a byte too far
        good().Word(1).Word(0x10001).Word(0).Word(0).Word(0),                // nothing, but outside
        good().Word(1).Word(0x10).Word(16).Word(0).Word(0).Word(0).Word(0),  // answer cut short
    };
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        Block block = blocks[i];
        OffsetSpace space;
        EXPECT_FALSE(CarryOut(block, space)) << "block " << i;
        EXPECT_EQ(space.Value(0x200, 1), 7u) << "block " << i;
    }
    OffsetSpace space;
    EXPECT_FALSE(CarryOut(nullptr, 0, space, [](const AppliedWrite&) {}));
}

TEST(RequestBlock, AcceptsExactlyWhatFits) {
    OffsetSpace space;
    Block corner = Block().Write(0xFFFC, 4, 9).Read(0, 0).Word(0);
    EXPECT_TRUE(CarryOut(corner, space));
    EXPECT_EQ(space.Value(0xFFFC, 4), 9u);

    Block full = Block().Read(0x100, 32512 - 16 - 4).Word(0);
    full.Bytes().resize(32768);
    EXPECT_TRUE(CarryOut(full, space));
    Block overfull = Block().Read(0x100, 32512 - 16 - 3).Word(0);
    overfull.Bytes().resize(32768);
    EXPECT_FALSE(CarryOut(overfull, space));
}

// Most of these begin like a good block, so that the walk gets deep into them.
TEST(RequestBlock, SurvivesRandomBlocks) {
    std::mt19937 random(20020315);
    const auto below = [&](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random()) % limit;
    };
    OffsetSpace space;
    int accepted = 0;
    for (int round = 0; round < 100000; ++round) {
        Block block;
        for (std::uint32_t records = below(6); records > 0; --records) {
            const std::uint32_t size = below(40);
            const std::uint32_t offset = below(0x10000 + 20);
            if (below(2))
                block.Read(offset, size);
            else
                block.Write(offset, size, random());
        }
        if (below(4)) block.Word(below(3));
        for (std::uint32_t flips = below(3); flips > 0 && !block.Bytes().empty(); --flips) {
            block.Bytes()[below(static_cast<std::uint32_t>(block.Bytes().size()))] =
                static_cast<std::byte>(random());
        }
        block.Bytes().shrink_to_fit();
        accepted += CarryOut(block, space);
    }
    EXPECT_GT(accepted, 10000);
    EXPECT_LT(accepted, 90000);
}

// A flight whose events and writes are printed, and a client that sends it one write at a time.
class FlightTest : public ::testing::Test {
   protected:
    void Write(std::uint32_t offset, std::uint32_t size, std::uint64_t value) {
        Send(Block().Write(offset, size, value));
    }
    std::uint64_t Read(std::uint32_t offset, std::uint32_t size) {
        Block block = Block().Read(offset, size).Word(0);
        EXPECT_TRUE(flight_.Answer(block.Bytes().data(), block.Bytes().size(), ignore_));
        return size < 8 ? block.WordAt(16) & (0xFFFFFFFF >> (32 - 8 * size))
                        : block.WordAt(16) | std::uint64_t{block.WordAt(20)} << 32;
    }
    void Send(Block block) {
        block.Word(0);
        EXPECT_TRUE(flight_.Answer(block.Bytes().data(), block.Bytes().size(), ignore_));
    }
    void Do(const std::string& line) { flight_.Apply(*ParseCommand(line)); }
    std::vector<std::string> LitLamps() {
        std::vector<std::string> lit;
        for (const LampRow& row : flight_.View().lamps) {
            for (const Lamp& lamp : row.lamps) {
                if (lamp.light != Light::Dark) lit.push_back(lamp.text);
            }
        }
        return lit;
    }

    const WriteCallback ignore_ = [](const AppliedWrite&) {};
    std::vector<std::string> printed_;
    Flight flight_{{{5, {Verb::TakeOff}}}, [this](double time, const std::string& event) {
                       printed_.push_back(EventLine(time, event));
                   }};
};

TEST_F(FlightTest, BeginsOnTheGroundAsAClientExpects) {
    EXPECT_GE(static_cast<std::int32_t>(Read(0x3304, 4)), 0x19980005);
    EXPECT_EQ(Read(0x3308, 4) >> 16, 0xFADEu);
    EXPECT_EQ(Read(0x0AEC, 2), 4u);
    EXPECT_EQ(Read(0x0264, 2), 0u);
    EXPECT_NE(Read(0x0366, 2), 0u);
    EXPECT_EQ(Read(0x0BE8, 4), 16383u);
    EXPECT_EQ(Read(0x125C, 4), 8388608u);
    EXPECT_THAT(LitLamps(), IsEmpty());
}

TEST_F(FlightTest, TakesOffAndRetracts) {
    flight_.Advance(4.875);
    EXPECT_NE(Read(0x0366, 2), 0u);
    flight_.Advance(60);
    EXPECT_EQ(Read(0x0366, 2), 0u);
    EXPECT_EQ(Read(0x0BE8, 4), 0u);
    EXPECT_EQ(Read(0x0BDC, 4), 0u);
    EXPECT_THAT(printed_, ElementsAre("5.000 # took off", "9.000 # gear up", "13.000 # flaps up"));

    Do("land");
    EXPECT_TRUE(flight_.View().gearDown);
    EXPECT_FALSE(flight_.View().airborne);
}

TEST_F(FlightTest, BurnsFuelAndMovesOnlyWhileFlying) {
    flight_.Advance(5);
    Do("fuel 2 0");
    Do("fuel 3 50");
    flight_.Advance(65);
    EXPECT_NEAR(static_cast<double>(Read(0x0B74, 4)), 8388608 - 60 * 582.5, 600);
    EXPECT_NEAR(static_cast<double>(Read(0x0B84, 4)), 4194304 - 60 * 582.5, 600);
    EXPECT_EQ(Read(0x0B7C, 4), 0u);
    EXPECT_NEAR(flight_.View().longitude, 8.560, 0.001);

    Do("pause");
    const std::uint64_t fuel = Read(0x0B74, 4);
    const std::uint64_t longitude = Read(0x0568, 8);
    flight_.Advance(100);
    EXPECT_EQ(Read(0x0B74, 4), fuel);
    EXPECT_EQ(Read(0x0568, 8), longitude);

    Do("resume");
    Write(0x05DC, 2, 1);
    for (std::uint32_t half = 0x0560; half < 0x0578; half += 4) Write(half, 4, 0);
    flight_.Advance(110);
    EXPECT_EQ(Read(0x0568, 8), 0u);
    Write(0x05DC, 2, 0);
    flight_.Advance(120);
    EXPECT_NEAR(flight_.View().longitude, 0.010, 0.0001);
    EXPECT_NEAR(flight_.View().altitude, 80, 1);
    EXPECT_EQ(flight_.View().latitude, 0);
}

TEST_F(FlightTest, ASwitchIsHeldOffForAsLongAsTheWritesKeepComing) {
    for (int second = 0; second < 10; ++second) {
        flight_.Advance(second);
        Write(0x3102, 1, 0);
        EXPECT_EQ(Read(0x3102, 1), 0u);
    }
    flight_.Advance(11.375);
    EXPECT_EQ(Read(0x3102, 1), 0u);
    EXPECT_THAT(LitLamps(), ElementsAre("Battery"));
    flight_.Advance(11.5);
    EXPECT_EQ(Read(0x3102, 1), 1u);
    EXPECT_THAT(LitLamps(), IsEmpty());
    EXPECT_THAT(printed_, Contains("11.500 # pilot switched on Battery (electrical switch)"));
}

TEST_F(FlightTest, GearFlapsAndTrimStayWhereTheyWereHeld) {
    Write(0x0BE8, 4, 0);
    Write(0x0BDC, 4, 0);
    EXPECT_THAT(LitLamps(), ElementsAre("Flaps", "Landing Gear"));
    flight_.Advance(4);
    EXPECT_THAT(LitLamps(), IsEmpty());
    EXPECT_EQ(Read(0x0BE8, 4), 0u);
    EXPECT_EQ(Read(0x0BDC, 4), 0u);
}

TEST_F(FlightTest, ControlsStayDisconnectedForAsLongAsTheWritesKeepComing) {
    Write(0x310A, 1, 5);
    flight_.Advance(2);
    Write(0x310A, 1, 4);
    EXPECT_THAT(LitLamps(), ElementsAre("Rudder"));
    flight_.Advance(4.25);
    EXPECT_EQ(Read(0x310A, 1), 4u);
    flight_.Advance(4.5);
    EXPECT_EQ(Read(0x310A, 1), 0u);
}

TEST_F(FlightTest, ACutLeverIsPushedForwardAfterHalfAMinute) {
    Write(0x0928, 2, 0);
    flight_.Advance(29.875);
    EXPECT_EQ(Read(0x0928, 2), 0u);
    EXPECT_THAT(LitLamps(), ElementsAre("Engine 2 cut"));
    flight_.Advance(30);
    EXPECT_EQ(Read(0x0928, 2), 16384u);
}

TEST_F(FlightTest, FailureFlagsStayUntilTheyAreCleared) {
    Write(0x0B71, 1, 1);
    Write(0x0B6B, 1, 9);
    flight_.Advance(1000);
    EXPECT_THAT(LitLamps(), ElementsAre("Engine 1", "Engine 4", "Pitot Static"));
    Write(0x0B6B, 1, 0);
    EXPECT_THAT(LitLamps(), ElementsAre("Pitot Static"));
}

TEST_F(FlightTest, OnlyALoweredTankDrains) {
    Write(0x0B84, 4, 4194304);
    EXPECT_THAT(LitLamps(), ElementsAre("Left Aux 50 %"));
    Write(0x0B84, 4, 8388608);
    EXPECT_THAT(LitLamps(), IsEmpty());
    Write(0x0B84, 4, 0);
    Write(0x0B84, 4, 0);
    EXPECT_THAT(LitLamps(), ElementsAre("Left Aux 0 %"));
}

TEST_F(FlightTest, TheScreenShowsATextForItsSecondsOnly) {
    Send(Block().WriteText(0x3380, 128, "QM:  Operational.").Write(0x32FA, 2, 5));
    flight_.Advance(3);
    Send(Block().WriteText(0x3380, 128, "QM:  No time given."));
    EXPECT_EQ(flight_.View().screenText, "QM:  Operational.");
    flight_.Advance(4.875);
    EXPECT_EQ(flight_.View().screenText, "QM:  Operational.");
    flight_.Advance(5);
    EXPECT_EQ(flight_.View().screenText, "");
    Send(Block().WriteText(0x3380, 128, std::string(128, 'x')).Write(0x32FA, 2, 1));
    EXPECT_EQ(flight_.View().screenText, std::string(128, 'x'));
}

TEST_F(FlightTest, AnOldModuleReportsAVersionThatIsTooLow) {
    Do("misbehave old");
    EXPECT_LT(static_cast<std::int32_t>(Read(0x3304, 4)), 0x19980005);
    Do("misbehave none");
    EXPECT_GE(static_cast<std::int32_t>(Read(0x3304, 4)), 0x19980005);
}

// Whatever a client leaves in the variables, the flight goes on and can be shown.
TEST_F(FlightTest, SurvivesGarbageInEveryVariable) {
    std::mt19937 random(1);
    for (int second = 0; second < 300; ++second) {
        for (const Variable& variable : Variables()) {
            const bool extreme = random() % 2 == 0;
            Write(variable.offset, variable.size, extreme ? ~0ull : random());
        }
        if (random() % 2) Do("takeoff");
        Write(0x0366, 2, 0);
        Write(0x0264, 2, 0);
        Write(0x05DC, 2, 0);
        flight_.Advance(second);
        for (const int percent : flight_.View().fuelPercent) {
            EXPECT_GE(percent, 0);
            EXPECT_LE(percent, 100);
        }
    }
}

TEST(Command, UnderstandsItsWordsAndNothingElse) {
    for (const char* line : {"takeoff", " land ", "pause\r", "resume", "gear up", "gear  down",
                             "flaps up", "engines 0", "engines 4", "fuel 1 0", "fuel 11 100",
                             "misbehave silent", "misbehave none", "quit"}) {
        EXPECT_TRUE(ParseCommand(line)) << line;
    }
    for (const char* line :
         {"", "gear", "gear sideways", "engines 5", "engines -1", "engines 2x", "fuel 0 50",
          "fuel 12 50", "fuel 1 101", "fuel 1", "quit now", "misbehave badly", "take off"}) {
        EXPECT_FALSE(ParseCommand(line)) << line;
    }
}

TEST(Script, RunsItsLinesInTheOrderOfTheirTimes) {
    std::istringstream lines("9 land\n\n2.5 takeoff\n  9 pause\n20 quit\n");
    int badLine = 0;
    const auto script = ParseScript(lines, badLine);
    ASSERT_TRUE(script);
    std::vector<std::string> printed;
    Flight flight(*script, [&](double time, const std::string& event) {
        printed.push_back(EventLine(time, event));
    });
    flight.Advance(20);
    EXPECT_THAT(printed, ElementsAre("2.500 # took off", "6.500 # gear up", "9.000 # gear down",
                                     "9.000 # flaps down", "9.000 # landed", "9.000 # paused",
                                     "20.000 # quit"));
    EXPECT_TRUE(flight.Ended());

    for (const char* bad : {"1 takeoff\n\nland\n", "1 land\n2 pause\n-1 quit\n", "\n\n3 climb\n"}) {
        std::istringstream badLines(bad);
        EXPECT_FALSE(ParseScript(badLines, badLine)) << bad;
        EXPECT_EQ(badLine, 3) << bad;
    }
}

TEST(WriteLine, ShowsTheValueAsItsSizeAsks) {
    const auto line = [](std::uint32_t offset, const std::string& bytes) {
        return WriteLine(12.3456, {offset, std::as_bytes(std::span(bytes)), 0});
    };
    EXPECT_EQ(line(0x0B71, "\x01"), "12.346 0x0B71 1 1 Pitot Static (failure flag)");
    EXPECT_EQ(line(0x32FA, std::string("\x05\0", 2)), "12.346 0x32FA 2 5 Message Seconds");
    EXPECT_EQ(line(0x0B7C, "\xFF\xFF\xFF\xFF"), "12.346 0x0B7C 4 4294967295 Left (tank level)");
    EXPECT_EQ(line(0x1000, "\x01\x02\xAB"), "12.346 0x1000 3 0102AB ?");
    EXPECT_EQ(line(0x1000, ""), "12.346 0x1000 0 - ?");
    EXPECT_EQ(line(0x3380, std::string("a \"b\"\\\n\xE9\0z", 10)),
              "12.346 0x3380 10 \"a \\x22b\\x22\\x5C\\x0A\\xE9\" Message Text");
}

}  // namespace
}  // namespace quirkmeter::practice
