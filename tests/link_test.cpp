// The client of the interface module, actuation, the status line and the sounds.
#include <cstring>
#include <tuple>

#include "link/actuation.h"
#include "link/sounds.h"
#include "link/status.h"
#include "program_test.h"
#include "scripted_chance.h"

namespace quirkmeter {

namespace {

using testing::_;
using testing::Pair;

using SimLinkTest = ProgramTest;

std::int32_t OpenResult(std::int32_t version = 0) {
    std::int32_t result = -1;
    bool opened = SimOpen(version, result);
    EXPECT_EQ(opened, result == SimOk);
    return result;
}

TEST_F(SimLinkTest, TheHandshakeRetriesUntilTheSimulatorAnswers) {
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

    TestSimulator simulator;  // of the two, the link finds this one
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

// Makes each platform call of opening fail in turn. Opening must return the code for that call and
// release everything.
TEST_F(SimLinkTest, EveryFailingCallLeavesNothingBehind) {
    TestSimulator simulator;
    int heldBySimulator = inprocess::HeldObjects();
    // The number of calls in a row that must fail for opening to fail, and their last error.
    std::tuple<const char*, int, std::uint32_t, std::int32_t> cases[] = {
        {"FindWindowExA", 2, 0, SimNoWindow},
        {"RegisterWindowMessageA", 1, 8, SimNoMessage},
        {"GlobalAddAtomA", 1, 8, SimNoAtom},
        {"CreateFileMappingA", 1, 8, SimNoView},
        {"CreateFileMappingA", 1, platform::ErrorAlreadyExists, SimMappingExists},
        {"MapViewOfFile", 1, 8, SimNoView},
        {"SendMessageTimeoutA", 41, 0, SimTimeout},
        {"SendMessageTimeoutA", 41, 5, SimSendFailed},
        {"SendMessageTimeoutA", 1, platform::ErrorInvalidWindowHandle, SimSendFailed}};
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
    // As many requests as fit.
    int reads = 0;
    while (SimRead(0, 0, bytes.data(), result)) ++reads;
    EXPECT_EQ(reads, (32512 - 4) / 16);
    EXPECT_TRUE(SimProcess(result));
}

// A window that is gone is never retried; after every other fault the link recovers.
TEST_F(LinkedTest, SendIsRetriedFortyTimes) {
    std::tuple<int, std::uint32_t, std::int32_t, int> cases[] = {
        {39, 0, SimOk, 40},
        {40, 0, SimTimeout, 41},  // too late even if it is delivered
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

TEST_F(LinkedTest, AnImpossibleAnswerIsReadUpToItsFault) {
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

// --- Actuation ---------------------------------------------------------------------------------

class ActuationTest : public LinkedTest {
   protected:
    // The writes of one tick that keep the failures in force.
    std::vector<std::string> Maintained() {
        MaintainFailures();
        return simulator_.TakeWrites();
    }
    std::vector<std::string> Cleared(std::string_view label) {
        auto [s, n] = Place(label);
        ClearFailure(s, n);
        return simulator_.TakeWrites();
    }
    std::uint64_t Level() const { return simulator_.Space.Value(0x0B7C, 4); }
    void SetLevel(std::uint64_t level) { simulator_.Space.SetValue(0x0B7C, 4, level); }

    DrawScript chance_;
};

TEST_F(ActuationTest, EveryModeWritesItsValueInEveryTickAndUndoesAFlagOnly) {
    std::tuple<const char*, const char*, const char*> rows[] = {
        {"AP(Heading)", "0x07C8 4 0 Heading (autopilot switch)", ""},
        {"Ctrl(Elevator Trim)", "0x0BC0 2 0 Elevator Trim (control)", ""},
        {"Elec(Battery)", "0x3102 1 0 Battery (electrical switch)", ""},
        {"Ctrl(Throttle)", "0x310A 1 8 Controls (disconnection bits)", ""},
        {"Inst(Pitot Static)", "0x0B71 1 1 Pitot Static (failure flag)",
         "0x0B71 1 0 Pitot Static (failure flag)"},
        {"Elec(Entire System)", "0x0B6A 1 1 Entire System (failure flag)",
         "0x0B6A 1 0 Entire System (failure flag)"},
        {"Eng(Engine 3 (Fail))", "0x0B6B 1 4 Engines (failure bits)",
         "0x0B6B 1 0 Engines (failure bits)"}};
    for (auto [label, inForce, undone] : rows) {
        SCOPED_TRACE(label);
        Fail(label);
        EXPECT_THAT(simulator_.TakeWrites(), IsEmpty()) << "a failure is not written when added";
        for (int tick = 0; tick < 3; ++tick) EXPECT_THAT(Maintained(), ElementsAre(inForce));
        std::vector<std::string> expected;
        if (*undone) expected.emplace_back(undone);
        EXPECT_EQ(Cleared(label), expected) << "on clearing";
        EXPECT_THAT(Maintained(), IsEmpty()) << "after clearing";
    }
}

TEST_F(ActuationTest, DisconnectedControlsShareOneByte) {
    for (const char* label : {"Ctrl(Elevator)", "Ctrl(Rudder)", "Ctrl(Aileron)", "Ctrl(Throttle)"})
        Fail(label);
    Maintained();
    std::pair<const char*, const char*> steps[] = {
        {"Ctrl(Throttle)", "0x310A 1 7 Controls (disconnection bits)"},
        {"Ctrl(Aileron)", "0x310A 1 5 Controls (disconnection bits)"},
        {"Ctrl(Elevator)", "0x310A 1 4 Controls (disconnection bits)"}};
    std::size_t left = 3;
    for (auto [cleared, byte] : steps) {
        EXPECT_THAT(Cleared(cleared), IsEmpty()) << cleared;
        EXPECT_EQ(Maintained(), std::vector<std::string>(left--, byte)) << "without " << cleared;
    }
    Cleared("Ctrl(Rudder)");
    EXPECT_THAT(Maintained(), IsEmpty());
}

TEST_F(ActuationTest, EngineBitsAreWrittenNewestRowFirstAndZeroedTogether) {
    Fail("Eng(Engine 1 (Fail))");
    Fail("Eng(Engine 4 (Fail))");
    EXPECT_THAT(Maintained(), ElementsAre("0x0B6B 1 8 Engines (failure bits)",
                                          "0x0B6B 1 1 Engines (failure bits)"));
    EXPECT_THAT(Cleared("Eng(Engine 1 (Fail))"), ElementsAre("0x0B6B 1 0 Engines (failure bits)"));
    EXPECT_THAT(Maintained(), ElementsAre("0x0B6B 1 8 Engines (failure bits)"));
}

TEST_F(ActuationTest, AStallIsWrittenOnceAndEndsInTheThirtiethTickAfterwards) {
    Fail("Eng(Engine 2 (Stall))");
    std::vector<std::byte> bytes(BlockUsed);
    std::int32_t result = 0;
    SimRead(0, BlockUsed - 4 - 16 - 8, bytes.data(), result);
    EXPECT_THAT(Maintained(), IsEmpty()) << "there was no room for it";
    EXPECT_FALSE(FailureList[1].Started()) << "one that could not be queued is tried again";
    EXPECT_THAT(Maintained(), ElementsAre("0x0928 2 0 Engine 2 (lever)"));
    for (int left = 30; left > 0; --left) {
        ASSERT_EQ(FailureList[1].Counter, left) << "ticks left of a stall";
        EXPECT_EQ(FailureCount, 1) << "with " << left << " ticks left";
        EXPECT_THAT(Maintained(), IsEmpty()) << "it is written once";
    }
    EXPECT_THAT(Failures(), IsEmpty()) << "it has ended by itself";
}

TEST_F(ActuationTest, ALeakTakesItsAmountFirstAndThenDrainsTheTank) {
    SetLevel(20001);
    Fail("Fuel(Tank Left (Leak))");
    chance_.Next = {10000};
    EXPECT_THAT(Maintained(), IsEmpty()) << "in its first tick";
    EXPECT_THAT(chance_.Asked, ElementsAre(Pair(10000, 5000))) << "the amount of a tick";
    for (const char* left : {"10001", "1", "0", "0"})
        EXPECT_THAT(Maintained(),
                    ElementsAre("0x0B7C 4 " + std::string(left) + " Left (tank level)"));
    EXPECT_THAT(Failures(), ElementsAre("Fuel(Tank Left (Leak))")) << "an empty tank leaks on";
    EXPECT_THAT(Cleared("Fuel(Tank Left (Leak))"), IsEmpty());

    for (std::uint64_t empty : {0u, 0xFFFFFFFFu}) {
        SetLevel(empty);
        Fail("Fuel(Tank Left (Leak))");
        EXPECT_THAT(Maintained(), IsEmpty());
        EXPECT_THAT(Failures(), IsEmpty()) << "a tank that was empty at first has no leak";
    }
    SetLevel(9000);
    Fail("Fuel(Tank Left (Leak))");
    Maintained();
    simulator_.Reply = 2;
    EXPECT_THAT(Maintained(), IsEmpty()) << "a level that was not read is not lowered";
    EXPECT_EQ(FailureCount, 1);
}

TEST_F(ActuationTest, ATickSendsOneBatchAndOneMoreForEachLeak) {
    MaintainFailures();
    EXPECT_EQ(simulator_.Batches, 0) << "nothing is failed";
    for (const char* label : {"Inst(Vacuum)", "Eng(Engine 1 (Stall))", "Ctrl(Flaps)"}) Fail(label);
    MaintainFailures();
    EXPECT_EQ(simulator_.Batches, 1);
    Fail("Fuel(Tank Left (Leak))");
    Fail("Fuel(Tank Right (Leak))");
    simulator_.Batches = 0;
    MaintainFailures();
    EXPECT_EQ(simulator_.Batches, 3);
}

TEST_F(ActuationTest, ClearingRefreshesTheListAndSounds) {
    ClearFailure(1, 1);
    ClearAllFailures(false);
    ClearLastFailure();
    EXPECT_THAT(inprocess::TakeSounds(), IsEmpty()) << "with nothing to clear";
    EXPECT_EQ(simulator_.Batches + window_.Refreshes, 0) << "with nothing to clear";
    std::tuple<const char*, std::function<void()>, std::vector<std::string>,
               std::vector<std::string>, std::size_t>
        rows[] = {{"all", [] { ClearAllFailures(false); }, {}, {"sound_ok.wav"}, 186},
                  {"all, quietly", [] { ClearAllFailures(true); }, {}, {}, 186},
                  {"the newest", [] { ClearLastFailure(); }, {"AP(Mach)"}, {"sound_ok.wav"}, 0}};
    for (auto& [rule, clear, left, sounds, draws] : rows) {
        SCOPED_TRACE(rule);
        ClearAllFailures(true);
        Fail("AP(Mach)");
        Fail("Radio(NAV)");
        chance_.Asked.clear();
        window_.Refreshes = 0;
        clear();
        EXPECT_EQ(Failures(), left);
        EXPECT_EQ(inprocess::TakeSounds(), sounds);
        EXPECT_EQ(window_.Refreshes, 1);
        EXPECT_EQ(chance_.Asked.size(), draws)
            << "three draws of each sub-system after clearing all";
    }
}

// --- The status line ---------------------------------------------------------------------------

class StatusTest : public ActuationTest {
   protected:
    // Shows the status line and returns it.
    std::string Shown(const std::string& line, bool force = false) {
        EngineState.StatusText = line;
        if (!force) FinishStatus();
        ShowStatus(force);
        return EngineState.StatusText;
    }
    std::string Message() {
        auto bytes = simulator_.Space.Bytes(0x3380, 128);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
};

TEST_F(StatusTest, NamesTheFailuresNewestFirstUntilTheLineIsFull) {
    Settings.DisplayFailures = true;
    EXPECT_EQ(Shown("No failures."), "No failures.");
    Fail("Inst(Vacuum)");
    EXPECT_EQ(Shown("1 failures."), "1 failures... Inst(Vacuum)");
    Fail("Eng(Engine 1 (Fail))");
    Fail("Radio(ADF)");
    EXPECT_EQ(Shown("3 failures."), "3 failures... Radio(ADF), Eng(Engine 1 (Fail)), Inst(Vacuum)");
    // The line takes one more label while it is shorter than 70 characters.
    std::string x(66 - 12, 'x');
    EXPECT_EQ(Shown(x), x + ".. Radio(ADF), Eng(Engine 1 (Fail))...");
    x.assign(66, 'x');
    EXPECT_EQ(Shown(x), x + ".. Radio(ADF)...") << "69 characters";
    EXPECT_EQ(Shown(x + 'x'), x + "x.. ...") << "70 characters";
    Settings.DisplayFailures = false;
    EXPECT_EQ(Shown("Operational."), "Operational.");
    Settings.DisplayFailures = Settings.HardcoreActive = true;
    EXPECT_EQ(Shown("Operational."), "Operational. Hardcore Mode.");
}

TEST_F(StatusTest, IsShownWhenItChangesAndInTheSimulatorIfTheUserWishes) {
    std::tuple<const char*, bool, bool, bool, bool> rows[] = {
        {"a", false, false, true, false}, {"a", false, false, false, false},
        {"a", false, true, true, true},   {"b", true, false, true, true},
        {"b", true, false, false, false}, {"b", true, true, true, true}};
    for (auto [line, displayUpdate, force, inWindow, inSimulator] : rows) {
        Settings.DisplayUpdate = displayUpdate;
        window_.Captions.clear();
        Shown(line, force);
        std::string rule = std::string(line) + (displayUpdate ? ", DisplayUpdate" : "") +
                           (force ? ", forced" : "");
        EXPECT_EQ(window_.Captions, std::vector<std::string>(inWindow, line)) << rule;
        std::vector<std::string> writes;
        if (inSimulator)
            writes = {"0x3380 128 \"QM:  " + std::string(line) + "\" Message Text",
                      "0x32FA 2 5 Message Seconds"};
        EXPECT_EQ(simulator_.TakeWrites(), writes) << rule;
    }
    EXPECT_EQ(simulator_.Batches, 3) << "text and seconds travel in one batch";
    SimClose();
    EXPECT_EQ(Shown("c"), "c");
    EXPECT_EQ(window_.Captions.back(), "c") << "the label is updated while the link is down";
}

TEST_F(StatusTest, MessageIsCutAndSentWholeOrNotAtAll) {
    Shown("short", true);
    EXPECT_EQ(Message(), "QM:  short" + std::string(118, '\0'));
    std::string cut = "QM:  " + std::string(122, 'x') + '\0';
    Shown(std::string(300, 'x'), true);
    EXPECT_EQ(Message(), cut);
    EXPECT_EQ(simulator_.Batches, 2);
    std::int32_t result = 0;
    EXPECT_TRUE(SimRead(0, BlockUsed - 4 - 16 - 100, nullptr, result));
    Shown("There is room for its seconds only.", true);
    EXPECT_EQ(Message(), cut);
    EXPECT_EQ(simulator_.Batches, 2);
}

TEST_F(ProgramTest, ASoundIsPlayedInTheBackgroundOrSkippedWhereItsFileIsMissing) {
    for (auto name : {SoundOk, SoundWarning, SoundFailure}) PlaySoundFile(name);
    PlaySoundFile("\\sound_none.wav");
    EXPECT_THAT(inprocess::TakeSounds(),
                ElementsAre("sound_ok.wav", "sound_warning.wav", "sound_failure.wav"));
}

}  // namespace

}  // namespace quirkmeter
