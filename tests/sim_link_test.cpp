#include <cstring>
#include <random>

#include "program_test.h"

namespace quirkmeter {
namespace {

using SimLinkTest = ProgramTest;

std::uint32_t Word(const std::vector<std::byte>& block, std::size_t at) {
    std::uint32_t word;
    std::memcpy(&word, &block[at], sizeof word);
    return word;
}

void Put(std::byte* block, std::size_t at, std::uint32_t word) {
    std::memcpy(block + at, &word, sizeof word);
}

std::int32_t OpenResult(std::int32_t version = 0) {
    std::int32_t result = -1;
    bool opened = SimOpen(version, result);
    EXPECT_EQ(opened, result == SimOk);
    return result;
}

TEST_F(SimLinkTest, HandshakeFillsTheBlockAsTheModuleExpects) {
    TestSimulator simulator;
    EXPECT_EQ(OpenResult(), SimOk);
    EXPECT_EQ(ModuleVersion, 0x19980005);
    EXPECT_EQ(SimVersion, 7);
    EXPECT_EQ(simulator.Batches, 1);
    EXPECT_NEAR(inprocess::Elapsed(), 0.1, 1e-6);

    const auto& block = simulator.Block;
    ASSERT_EQ(block.size(), 32768u);
    EXPECT_EQ(Word(block, 0), 1u);
    EXPECT_EQ(Word(block, 4), 0x3304u);
    EXPECT_EQ(Word(block, 8), 4u);
    EXPECT_NE(Word(block, 12), 0u);
    EXPECT_EQ(Word(block, 16), 0u);
    EXPECT_EQ(Word(block, 24), 0x3308u);
    EXPECT_EQ(Word(block, 40), 0u);

    char name[32];
    auto atom = static_cast<std::uint16_t>(SimLink.Atom);
    EXPECT_EQ(platform::GlobalGetAtomNameA(atom, name, sizeof name), 18u);
    EXPECT_STREQ(name, "FSASMLIB:IPC:1A4:1");
    EXPECT_LT(SimLink.Atom, 0) << "a string atom is widened with its sign";
}

TEST_F(SimLinkTest, OpenReportsWhatIsMissing) {
    EXPECT_EQ(OpenResult(), SimNoWindow);
    {
        TestSimulator old("FS98MAIN");
        old.Space.SetValue(0x3304, 4, 0x19980004);
        EXPECT_EQ(OpenResult(), SimBadVersionFs98);
    }
    TestSimulator simulator;
    simulator.Space.SetValue(0x3304, 4, 0x19980004);
    EXPECT_EQ(OpenResult(), SimBadVersion);
    simulator.Space.SetValue(0x3304, 4, 0xFFFFFFFF);  // negative: lower than any
    EXPECT_EQ(OpenResult(), SimBadVersion);
    simulator.Space.SetValue(0x3304, 4, 0x19980005);
    simulator.Space.SetValue(0x3308, 4, 0xFADF0007);
    EXPECT_EQ(OpenResult(), SimBadVersion);
    simulator.Space.SetValue(0x3308, 4, 0xFADEFFFF);
    EXPECT_EQ(OpenResult(7), SimWrongSimulator);
    EXPECT_EQ(SimLink.View, nullptr);
    EXPECT_EQ(OpenResult(0xFFFF), SimOk);
    auto view = SimLink.View;
    EXPECT_EQ(OpenResult(), SimAlreadyOpen);
    EXPECT_EQ(SimLink.View, view);

    SimInit();
    EXPECT_EQ(OpenResult(), SimMappingExists) << "the old mapping still holds the name";
}

TEST_F(SimLinkTest, AModuleStillLoadingIsAskedFiveTimes) {
    TestSimulator simulator;
    simulator.Space.SetValue(0x3308, 4, 0);
    EXPECT_EQ(OpenResult(), SimBadVersion);
    EXPECT_EQ(simulator.Batches, 5);
    EXPECT_NEAR(inprocess::Elapsed(), 0.5, 1e-6);
}

// Every call that opening makes, failing at every time it is made: the code that stands for it, and
// nothing held afterwards.
TEST_F(SimLinkTest, EveryFailingCallLeavesNothingBehind) {
    TestSimulator simulator;
    const int heldBySimulator = inprocess::HeldObjects();
    struct Case {
        const char* Function;
        int Calls;  // how many must fail for opening to fail
        std::uint32_t LastError;
        std::int32_t Result;
    };
    const Case cases[] = {
        {"FindWindowExA", 2, 0, SimNoWindow},
        {"RegisterWindowMessageA", 1, 8, SimNoMessage},
        {"GlobalAddAtomA", 1, 8, SimNoAtom},
        {"CreateFileMappingA", 1, 8, SimNoView},
        {"CreateFileMappingA", 1, platform::ErrorAlreadyExists, SimMappingExists},
        {"MapViewOfFile", 1, 8, SimNoView},
        {"SendMessageTimeoutA", 41, 0, SimTimeout},
        {"SendMessageTimeoutA", 41, platform::ErrorInvalidWindowHandle, SimSendFailed},
    };
    for (const Case& failing : cases) {
        SCOPED_TRACE(failing.Function);
        inprocess::FailCalls(failing.Function, 1, failing.Calls, failing.LastError);
        EXPECT_EQ(OpenResult(), failing.Result);
        EXPECT_EQ(SimLink.View, nullptr);
        EXPECT_EQ(inprocess::HeldObjects(), heldBySimulator);
        SimClose();
        SimInit();
        EXPECT_EQ(OpenResult(), SimOk) << "it opens again once the call works";
        SimClose();
        EXPECT_EQ(inprocess::HeldObjects(), heldBySimulator);
    }
    // With the first class not found the second is used.
    TestSimulator fs98("FS98MAIN");
    inprocess::FailCalls("FindWindowExA", 1, 1, 0);
    EXPECT_EQ(OpenResult(), SimOk);
}

TEST_F(SimLinkTest, EveryNthFailingSendOfAHandshakeIsRetriedOrReported) {
    TestSimulator simulator;
    simulator.Space.SetValue(0x3308, 4, 0);  // five batches
    const int held = inprocess::HeldObjects();
    for (int nth = 1; nth <= 5; ++nth) {
        inprocess::FailCalls("SendMessageTimeoutA", nth, 1, 5);
        EXPECT_EQ(OpenResult(), SimBadVersion) << "one failing send costs a retry, no more";
        inprocess::FailCalls("SendMessageTimeoutA", nth, 41, 5);
        EXPECT_EQ(OpenResult(), SimSendFailed);
        EXPECT_EQ(inprocess::HeldObjects(), held);
    }
}

TEST_F(LinkedTest, ClosedLinkRefusesEverything) {
    SimClose();
    std::int32_t result = 0;
    EXPECT_FALSE(SimRead(0, 4, &result, result));
    EXPECT_EQ(result, SimNotOpen);
    EXPECT_FALSE(SimWrite(0, 4, &result, result));
    EXPECT_FALSE(SimProcess(result));
    EXPECT_EQ(result, SimNotOpen);
    EXPECT_EQ(Simulator.Batches, 0);
}

TEST_F(LinkedTest, BatchTravelsInOrderWithEveryKindOfRequest) {
    std::int32_t result = -1;
    EXPECT_FALSE(SimProcess(result));
    EXPECT_EQ(result, SimNothingQueued);
    EXPECT_EQ(Simulator.Batches, 0);

    std::uint32_t before = 0, after = 0;
    std::uint16_t value = 0xBEEF;
    EXPECT_TRUE(SimRead(0x0100, 2, &before, result));
    EXPECT_TRUE(SimWrite(0x0100, 2, &value, result));
    value = 0;  // the bytes were copied
    EXPECT_TRUE(SimRead(0x0100, 4, nullptr, result));
    EXPECT_TRUE(SimRead(0x0100, 0, &before, result));
    EXPECT_TRUE(SimWrite(0x0100, 0, nullptr, result));
    EXPECT_TRUE(SimRead(0x0100, 2, &after, result));
    EXPECT_TRUE(SimProcess(result));
    EXPECT_EQ(before, 0u);
    EXPECT_EQ(after, 0xBEEFu);
    EXPECT_EQ(Simulator.Batches, 1);
    EXPECT_EQ(SimLink.Next, SimLink.View);
}

TEST_F(LinkedTest, RequestsEndAtTheUsedPartOfTheBlock) {
    std::vector<std::byte> bytes(BlockUsed);
    std::int32_t result = 0;
    const std::int32_t exact = BlockUsed - 4 - 16;
    EXPECT_FALSE(SimRead(0, exact + 1, bytes.data(), result));
    EXPECT_EQ(result, SimDoesNotFit);
    EXPECT_EQ(SimLink.Next, SimLink.View);
    EXPECT_TRUE(SimRead(0, exact, bytes.data(), result));
    EXPECT_FALSE(SimWrite(0, 0, nullptr, result));
    EXPECT_EQ(result, SimDoesNotFit);
    EXPECT_TRUE(SimProcess(result));

    for (std::int32_t size : {0x7FFFFFFF, -1}) {
        EXPECT_FALSE(SimRead(0, size, bytes.data(), result));
        EXPECT_FALSE(SimWrite(0, size, bytes.data(), result));
    }
    // As many requests as ever fit.
    int reads = 0;
    while (SimRead(0, 0, bytes.data(), result)) ++reads;
    EXPECT_EQ(reads, (BlockUsed - 4) / 16);
    EXPECT_TRUE(SimProcess(result));
}

TEST_F(LinkedTest, SendIsRetriedFortyTimes) {
    std::int32_t result = 0, value = 7;
    double start = inprocess::Elapsed();
    auto process = [&] {
        start = inprocess::Elapsed();
        EXPECT_TRUE(SimRead(0x3308, 4, &value, result));
        return SimProcess(result);
    };
    inprocess::FailCalls("SendMessageTimeoutA", 1, 39, 0);
    EXPECT_TRUE(process());
    EXPECT_NEAR(inprocess::Elapsed() - start, 3.9, 1e-6);

    inprocess::FailCalls("SendMessageTimeoutA", 1, 40, 0);
    value = 7;
    EXPECT_FALSE(process()) << "the 40th retry comes too late even when it is delivered";
    EXPECT_EQ(result, SimTimeout);
    EXPECT_NEAR(inprocess::Elapsed() - start, 4.0, 1e-6);
    EXPECT_EQ(value, 7);

    inprocess::FailCalls("SendMessageTimeoutA", 1, 100, 1400);
    int sends = inprocess::CallCount("SendMessageTimeoutA");
    EXPECT_FALSE(process());
    EXPECT_EQ(result, SimSendFailed);
    EXPECT_EQ(inprocess::CallCount("SendMessageTimeoutA") - sends, 41);
    EXPECT_NE(SimLink.View, nullptr) << "the link stays open";
    EXPECT_EQ(SimLink.Next, SimLink.View) << "with nothing queued";

    inprocess::FailCalls("SendMessageTimeoutA", 1, 0, 0);
    Simulator.Reply = 2;
    EXPECT_FALSE(process());
    EXPECT_EQ(result, SimBadReply);
    EXPECT_EQ(value, 7);
}

TEST_F(LinkedTest, UnknownIdentifierKeepsTheResultCodeAndEarlierAnswers) {
    std::uint32_t first = 0, second = 7;
    std::int32_t result = 0;
    SimRead(0x3308, 4, &first, result);
    SimRead(0x3308, 4, &second, result);
    Simulator.Spoil = [](std::byte* block) { Put(block, 20, 3); };
    result = 99;
    EXPECT_FALSE(SimProcess(result));
    EXPECT_EQ(result, 99);
    EXPECT_EQ(first, 0xFADE0007u);
    EXPECT_EQ(second, 7u);
    EXPECT_EQ(SimLink.Next, SimLink.View);

    // Only the low half of an identifier counts.
    SimRead(0x3308, 4, &second, result);
    Simulator.Spoil = [](std::byte* block) { Put(block, 0, 0xABCD0001); };
    EXPECT_TRUE(SimProcess(result));
    EXPECT_EQ(second, 0xFADE0007u);
}

TEST_F(LinkedTest, ImpossibleHeadersNeverReachBeyondBlockOrBuffer) {
    struct {
        std::uint32_t Before = 0x11111111, Value = 0, After = 0x22222222;
    } buffer;
    std::int32_t result = 0;
    const std::uint32_t sizes[] = {5, 8, 32496, 32497, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    for (std::uint32_t size : sizes) {
        SimRead(0x3308, 4, &buffer.Value, result);
        Simulator.Spoil = [size](std::byte* block) { Put(block, 8, size); };
        result = 99;
        EXPECT_FALSE(SimProcess(result)) << size;
        EXPECT_EQ(result, 99);
    }
    for (std::uint32_t destination : {2u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        SimRead(0x3308, 4, &buffer.Value, result);
        Simulator.Spoil = [destination](std::byte* block) { Put(block, 12, destination); };
        EXPECT_FALSE(SimProcess(result)) << destination;
    }
    // A block of nothing but headers, without an end.
    SimRead(0x3308, 4, &buffer.Value, result);
    Simulator.Spoil = [](std::byte* block) {
        for (std::size_t at = 0; at + 16 <= 32768; at += 12) {
            Put(block, at, 2);
            Put(block, at + 8, 0);
        }
    };
    EXPECT_FALSE(SimProcess(result));

    std::mt19937 random(1);
    Simulator.Spoil = [&random](std::byte* block) {
        for (std::size_t at = 0; at < 256; at += 4) {
            auto word = static_cast<std::uint32_t>(random());
            Put(block, at, word % 5 == 0 ? word : word % 20);
        }
    };
    for (int i = 0; i < 20000; ++i) {
        SimRead(0x3308, 4, &buffer.Value, result);
        SimProcess(result);
    }
    EXPECT_EQ(buffer.Before, 0x11111111u);
    EXPECT_EQ(buffer.After, 0x22222222u);
}

}  // namespace
}  // namespace quirkmeter
