#include <cstring>
#include <tuple>

#include "program_test.h"

namespace quirkmeter {

namespace {

using testing::_;

using SimLinkTest = ProgramTest;

std::int32_t OpenResult(std::int32_t version = 0) {
    std::int32_t result = -1;
    bool opened = SimOpen(version, result);
    EXPECT_EQ(opened, result == SimOk);
    return result;
}

TEST_F(SimLinkTest, HandshakeGoesOnUntilTheSimulatorIsThere) {
    TestSimulator simulator;
    simulator.Space.SetValue(0x3308, 4, 0);
    simulator.Spoil = [&](std::byte*) { simulator.Space.SetValue(0x3308, 4, 0xFADE0007); };
    EXPECT_EQ(OpenResult(7), SimOk);
    EXPECT_EQ(simulator.Batches, 2);
    EXPECT_NEAR(inprocess::Elapsed(), 0.2, 1e-6);

    ASSERT_EQ(simulator.Block.size(), 32768u);
    std::uint32_t words[11];
    std::memcpy(words, simulator.Block.data(), sizeof words);
    EXPECT_THAT(words, ElementsAre(1, 0x3304, 4, _, 0, 1, 0x3308, 4, _, 0, 0))
        << "the first answers are gone";
    EXPECT_EQ(inprocess::LastSend(), (inprocess::SendCall{0xFFFFC000, 0, 1, 2000}))
        << "a string atom is widened with its sign, to 32 bits";
    char name[32];
    platform::GlobalGetAtomNameA(0xC000, name, sizeof name);
    EXPECT_STREQ(name, "FSASMLIB:IPC:1A4:1");
}

TEST_F(SimLinkTest, OpenReportsWhatIsMissing) {
    EXPECT_EQ(OpenResult(), SimNoWindow);
    TestSimulator old("FS98MAIN");
    EXPECT_EQ(OpenResult(6), SimWrongSimulator);
    old.Space.SetValue(0x3304, 4, 0x19980004);
    EXPECT_EQ(OpenResult(), SimBadVersionFs98);

    TestSimulator simulator;  // of the two it is the one to be found
    for (auto [module, simulated, batches] : {std::tuple{0x19980004u, 0xFADE0007u, 1},
                                              {0xFFFFFFFFu, 0xFADE0007u, 1},
                                              {0x19980005u, 0xFADF0007u, 1},
                                              {0x19980005u, 0u, 5},
                                              {0u, 0xFADE0007u, 5}}) {
        simulator.Space.SetValue(0x3304, 4, module);
        simulator.Space.SetValue(0x3308, 4, simulated);
        simulator.Batches = 0;
        EXPECT_EQ(OpenResult(), SimBadVersion);
        EXPECT_EQ(simulator.Batches, batches) << std::hex << module << ' ' << simulated;
    }
    simulator.Space.SetValue(0x3304, 4, 0x19980005);
    simulator.Space.SetValue(0x3308, 4, 0xFADEFFFF);
    EXPECT_EQ(OpenResult(0xFFFF), SimOk);
    const auto* view = SimLink.View;
    EXPECT_EQ(OpenResult(), SimAlreadyOpen);
    EXPECT_EQ(SimLink.View, view);
    SimInit();
    EXPECT_EQ(OpenResult(), SimMappingExists) << "the old mapping still holds the name";
}

// Every call that opening makes, failing at every time it is made: the code that stands for it, and
// nothing held afterwards.
TEST_F(SimLinkTest, EveryFailingCallLeavesNothingBehind) {
    TestSimulator simulator;
    int heldBySimulator = inprocess::HeldObjects();
    // How many calls must fail for opening to fail, and their last error.
    std::tuple<const char*, int, std::uint32_t, std::int32_t> cases[] = {
        {"FindWindowExA", 2, 0, SimNoWindow},
        {"RegisterWindowMessageA", 1, 8, SimNoMessage},
        {"GlobalAddAtomA", 1, 8, SimNoAtom},
        {"CreateFileMappingA", 1, 8, SimNoView},
        {"CreateFileMappingA", 1, platform::ErrorAlreadyExists, SimMappingExists},
        {"MapViewOfFile", 1, 8, SimNoView},
        {"SendMessageTimeoutA", 41, 0, SimTimeout},
        {"SendMessageTimeoutA", 41, 5, SimSendFailed},
        {"SendMessageTimeoutA", 1, platform::ErrorInvalidWindowHandle, SimSendFailed},
    };
    for (auto [function, calls, lastError, result] : cases) {
        SCOPED_TRACE(function);
        inprocess::FailCalls(function, 1, calls, lastError);
        EXPECT_EQ(OpenResult(), result);
        EXPECT_EQ(inprocess::HeldObjects(), heldBySimulator);
        SimClose();
        SimInit();
        EXPECT_EQ(OpenResult(), SimOk) << "it opens again once the call works";
        SimClose();
        EXPECT_EQ(inprocess::HeldObjects(), heldBySimulator);
    }
}

TEST_F(LinkedTest, BatchTravelsInOrderWithEveryKindOfRequest) {
    std::int32_t result = -1;
    EXPECT_FALSE(SimProcess(result));
    EXPECT_EQ(result, SimNothingQueued);
    std::uint32_t before = 9, after = 9;
    std::uint16_t value = 0xBEEF;
    SimRead(0x0100, 4, &before, result);
    SimWrite(0x0100, 2, &value, result);
    value = 0;  // the bytes were copied
    SimRead(0x0100, 4, nullptr, result);
    SimRead(0x0100, 0, &before, result);
    SimWrite(0x0100, 0, nullptr, result);
    SimRead(0x0100, 4, &after, result);
    EXPECT_TRUE(SimProcess(result));
    EXPECT_EQ(before, 0u);
    EXPECT_EQ(after, 0xBEEFu);

    SimClose();
    EXPECT_FALSE(SimRead(0, 4, &before, result) || SimWrite(0, 4, &before, result));
    EXPECT_EQ(result, SimNotOpen);
    result = -1;
    EXPECT_FALSE(SimProcess(result));
    EXPECT_EQ(result, SimNotOpen);
    EXPECT_EQ(simulator_.Batches, 1);
}

TEST_F(LinkedTest, RequestsEndAtTheUsedPartOfTheBlock) {
    std::vector<std::byte> bytes(BlockUsed);
    std::int32_t result = 0;
    std::int32_t exact = 32512 - 4 - 16;
    for (std::int32_t size : {exact + 1, 0x7FFFFFFF, -1}) {
        EXPECT_FALSE(SimRead(0, size, bytes.data(), result));
        EXPECT_EQ(result, SimDoesNotFit);
    }
    EXPECT_TRUE(SimRead(0, exact, bytes.data(), result));
    EXPECT_FALSE(SimWrite(0, 0, nullptr, result));
    EXPECT_EQ(result, SimDoesNotFit);
    EXPECT_FALSE(SimWrite(0, -12, bytes.data(), result));
    EXPECT_TRUE(SimProcess(result));
    // As many requests as ever fit.
    int reads = 0;
    while (SimRead(0, 0, bytes.data(), result)) ++reads;
    EXPECT_EQ(reads, (32512 - 4) / 16);
    EXPECT_TRUE(SimProcess(result));
}

// A window that is gone stays gone; everything else may come back.
TEST_F(LinkedTest, SendIsRetriedFortyTimes) {
    std::tuple<int, std::uint32_t, std::int32_t, int> cases[] = {
        {39, 0, SimOk, 40},
        {40, 0, SimTimeout, 41},  // too late even when it is delivered
        {40, 5, SimSendFailed, 41},
        {40, platform::ErrorInvalidWindowHandle, SimSendFailed, 1},
        {0, 0, SimBadReply, 1}};
    for (auto [failing, lastError, expected, expectedSends] : cases) {
        std::int32_t result = 0, value = 7;
        inprocess::FailCalls("SendMessageTimeoutA", 1, failing, lastError);
        simulator_.Reply = expected == SimBadReply ? 2 : 1;
        int sends = inprocess::CallCount("SendMessageTimeoutA");
        double start = inprocess::Elapsed();
        EXPECT_TRUE(SimRead(0x0AEC, 4, &value, result)) << "the link stays open";
        bool processed = SimProcess(result);
        EXPECT_EQ(processed, expected == SimOk);
        EXPECT_EQ(result, expected);
        EXPECT_EQ(value, processed ? 4 : 7);
        EXPECT_EQ(inprocess::CallCount("SendMessageTimeoutA") - sends, expectedSends);
        EXPECT_NEAR(inprocess::Elapsed() - start, 0.1 * (expectedSends - 1), 1e-6);
        EXPECT_EQ(SimLink.Next, SimLink.View) << "nothing stays queued";
    }
}

TEST_F(LinkedTest, AnImpossibleAnswerIsBelievedUpToItsFault) {
    struct {
        std::uint32_t Before = 0x11111111, Value = 0, After = 0x22222222;
    } buffer;
    std::uint32_t first = 0;
    std::int32_t result = 0;
    for (int i = 0; i < 3; ++i) SimRead(0x3308, 4, &first, result);
    EXPECT_TRUE(SimProcess(result)) << "and leaves what a wrong reference could find";
    auto processWith = [&](std::size_t at, std::uint32_t word) {
        SimRead(0x3308, 4, &first, result);
        SimRead(0x3308, 4, &buffer.Value, result);
        simulator_.Spoil = [=](std::byte* block) { std::memcpy(block + at, &word, sizeof word); };
        result = 99;
        bool processed = SimProcess(result);
        EXPECT_EQ(result, processed ? 0 : 99);
        EXPECT_EQ(SimLink.Next, SimLink.View);
        return processed;
    };
    EXPECT_FALSE(processWith(20, 3)) << "no identifier";
    EXPECT_EQ(first, 0xFADE0007u);
    EXPECT_EQ(buffer.Value, 0u);
    EXPECT_TRUE(processWith(20, 0xABCD0001)) << "of an identifier its low half counts";
    EXPECT_EQ(buffer.Value, 0xFADE0007u);
    for (std::uint32_t size : {5u, 8u, 32476u, 32477u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_FALSE(processWith(28, size)) << size;
    for (std::uint32_t destination : {3u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        EXPECT_FALSE(processWith(32, destination)) << destination;
    EXPECT_EQ(buffer.Before, 0x11111111u);
    EXPECT_EQ(buffer.After, 0x22222222u);
}

}  // namespace

}  // namespace quirkmeter
