// The life of the Hardcore Mode companion, told by a Quirkmeter that comes and goes.
#include "companion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/inprocess/inprocess.h"

namespace quirkmeter {

namespace {

namespace inprocess = platform::inprocess;
using testing::ElementsAre;
using testing::IsEmpty;

class CompanionTest : public testing::Test {
   protected:
    CompanionTest() {
        inprocess::Reset();
        inprocess::SetProgramFolder("folder");
    }

    void SetProgramRuns(bool runs) { inprocess::SetInstanceRuns("Quirkmeter", runs); }
    bool WindowIsThere() const { return platform::FindWindowA("ThunderRT6FormDC", "FSQMHC") != 0; }

    // Ticks for which the companion stays, at most that many.
    int Ticks(int most) {
        for (int ticks = 0; ticks < most; ++ticks)
            if (!companion_.Tick()) return ticks;
        return most;
    }

    Companion companion_{"\\Quirkmeter"};
};

TEST_F(CompanionTest, StartsTheProgramAgainOnceItHasEndedAndEndsWithThat) {
    SetProgramRuns(true);
    EXPECT_TRUE(companion_.Start());
    EXPECT_TRUE(WindowIsThere());
    EXPECT_EQ(Ticks(29), 29);
    EXPECT_THAT(inprocess::TakeShellRuns(), IsEmpty()) << "the first one is still ending";
    SetProgramRuns(false);
    EXPECT_TRUE(companion_.Tick());
    EXPECT_THAT(inprocess::TakeShellRuns(),
                ElementsAre(inprocess::ShellRun{"Open", "folder/Quirkmeter", "", "",
                                                platform::ShowNormal}));
    EXPECT_EQ(Ticks(29), 29) << "the second one is still starting";
    SetProgramRuns(true);
    EXPECT_EQ(Ticks(1000), 1000);
    EXPECT_TRUE(WindowIsThere());
    SetProgramRuns(false);
    EXPECT_FALSE(companion_.Tick());
    EXPECT_FALSE(WindowIsThere());
    EXPECT_THAT(inprocess::TakeShellRuns(), IsEmpty()) << "once only";
}

TEST_F(CompanionTest, GivesUpOnAProgramThatDoesNotAppear) {
    EXPECT_TRUE(companion_.Start());
    EXPECT_EQ(Ticks(1000), 30);
    EXPECT_EQ(inprocess::TakeShellRuns().size(), 1u);
}

// It did not start the companion, but found its window.
TEST_F(CompanionTest, ServesAProgramThatStaysOrCameJustNow) {
    SetProgramRuns(true);
    EXPECT_TRUE(companion_.Start());
    EXPECT_EQ(Ticks(30), 30);
    // Not there yet at the first look, there at the second.
    inprocess::FailCalls("InstanceRuns", 1, 1, platform::ErrorSuccess);
    EXPECT_TRUE(companion_.Tick());
    EXPECT_TRUE(WindowIsThere());
    EXPECT_TRUE(companion_.Tick());
    inprocess::FailCalls("InstanceRuns", 1, 1, platform::ErrorSuccess);
    inprocess::FailCalls("OwnWindow", 1, 1, platform::ErrorNotEnoughMemory);
    EXPECT_FALSE(companion_.Tick()) << "without its window it is of no use";
    EXPECT_THAT(inprocess::TakeShellRuns(), IsEmpty());
}

TEST_F(CompanionTest, IsOneOnlyAndNothingWithoutItsWindow) {
    for (const char* call : {"ClaimSingleInstance", "OwnWindow"}) {
        inprocess::FailCalls(call, 1, 1, platform::ErrorNotEnoughMemory);
        EXPECT_FALSE(companion_.Start());
        EXPECT_FALSE(WindowIsThere());
    }
    EXPECT_TRUE(Companion("\\Quirkmeter").Start());
    EXPECT_FALSE(WindowIsThere());
}

}  // namespace

}  // namespace quirkmeter
