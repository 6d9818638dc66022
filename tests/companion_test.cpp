// Tests the Hardcore Mode companion beside a Quirkmeter that starts and ends.
#include "companion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/inprocess/inprocess.h"

namespace quirkmeter {

namespace {

namespace inprocess = platform::inprocess;
using enum platform::InstanceClaim;

constexpr std::uint32_t None = 0, Starter = 100, Second = 200;  // the process that runs

class CompanionTest : public testing::Test {
   protected:
    CompanionTest() {
        inprocess::Reset();
        inprocess::SetProgramFolder("folder");
    }

    void SetRunning(std::uint32_t process) { inprocess::SetInstanceProcess("Quirkmeter", process); }
    bool WindowIsThere() const { return platform::FindWindowA("ThunderRT6FormDC", "FSQMHC") != 0; }

    Companion companion_{"\\Quirkmeter"};
};

TEST_F(CompanionTest, RestartsTheProgramOnceAndStaysWhileItRuns) {
    struct Life {
        const char* Story;
        std::vector<std::pair<std::uint32_t, int>> Stages;  // the process; its ticks at most
        std::size_t Starts;
        int LastTicks;  // the ticks of the last stage
    };
    Life lives[] = {
        {"started again, closed", {{Starter, 29}, {None, 30}, {Second, 99}, {None, 9}}, 1, 0},
        {"started again, closed soon", {{Starter, 1}, {None, 1}, {Second, 2}, {None, 9}}, 1, 0},
        {"does not appear", {{Starter, 1}, {None, 1000}}, 1, 30},
        {"ended before the first look", {{None, 1}, {Second, 99}, {None, 9}}, 1, 0},
        {"the first stays, closed late", {{Starter, 30}, {None, 9}}, 0, 0},
        {"the user's second start, closed soon", {{Second, 2}, {None, 9}}, 0, 0},
        {"the user's second start, seen late", {{Starter, 5}, {Second, 1}, {None, 9}}, 0, 0},
    };
    for (const Life& life : lives) {
        Companion companion("\\Quirkmeter");
        SetRunning(Starter);
        EXPECT_EQ(companion.Start(), Claimed) << life.Story;
        EXPECT_TRUE(WindowIsThere()) << life.Story;
        int stayed = 0;
        for (auto [running, ticks] : life.Stages) {
            SetRunning(running);
            for (stayed = 0; stayed < ticks && companion.Tick();) ++stayed;
        }
        EXPECT_EQ(stayed, life.LastTicks) << life.Story;
        EXPECT_EQ(inprocess::TakeShellRuns(),
                  std::vector(life.Starts, inprocess::ShellRun{"Open", "folder/Quirkmeter", "", "",
                                                               platform::ShowNormal}))
            << life.Story;
    }
}

TEST_F(CompanionTest, RecreatesItsWindowForAProgramThatStartedMeanwhile) {
    SetRunning(Second);
    EXPECT_EQ(companion_.Start(), Claimed);
    for (int tick = 0; tick < 31; ++tick) EXPECT_TRUE(companion_.Tick());
    // The program is missing at the first look and there at the second.
    inprocess::FailCalls("InstanceProcess", 1, 1, platform::ErrorSuccess);
    EXPECT_TRUE(companion_.Tick());
    EXPECT_TRUE(WindowIsThere());
    inprocess::FailCalls("InstanceProcess", 1, 1, platform::ErrorSuccess);
    inprocess::FailCalls("OwnWindow", 1, 1, platform::ErrorNotEnoughMemory);
    EXPECT_FALSE(companion_.Tick()) << "without its window it is of no use";
    SetRunning(None);
    EXPECT_FALSE(companion_.Tick());
    EXPECT_FALSE(WindowIsThere());
}

TEST_F(CompanionTest, StaysWhileItCannotLookForTheProgram) {
    EXPECT_EQ(companion_.Start(), Claimed);
    inprocess::FailCalls("InstanceProcess", 1, 1, platform::ErrorNotEnoughMemory);
    EXPECT_TRUE(companion_.Tick());
    EXPECT_TRUE(inprocess::TakeShellRuns().empty()) << "the first one may still be there";
    SetRunning(Second);
    EXPECT_TRUE(companion_.Tick());
    inprocess::FailCalls("InstanceProcess", 1, 50, platform::ErrorNotEnoughMemory);
    for (int tick = 0; tick < 50; ++tick) EXPECT_TRUE(companion_.Tick() && WindowIsThere());
    SetRunning(None);
    inprocess::FailCalls("InstanceProcess", 2, 1, platform::ErrorNotEnoughMemory);
    EXPECT_TRUE(companion_.Tick() && WindowIsThere()) << "the second look";
    EXPECT_FALSE(companion_.Tick());
}

TEST_F(CompanionTest, AFailedStartLeavesNoWindow) {
    for (const char* call : {"ClaimSingleInstance", "OwnWindow", "InstanceProcess"}) {
        inprocess::FailCalls(call, 1, 1, platform::ErrorNotEnoughMemory);
        EXPECT_EQ(Companion("\\Quirkmeter").Start(), Failed) << call;
        EXPECT_FALSE(WindowIsThere()) << call;
    }
    inprocess::FailCalls("ClaimSingleInstance", 1, 1, platform::ErrorSuccess);
    EXPECT_EQ(companion_.Start(), Taken);
    EXPECT_EQ(Companion("\\Quirkmeter").Start(), Claimed);
    EXPECT_FALSE(WindowIsThere());
}

}  // namespace

}  // namespace quirkmeter
