// Hardcore Mode: its companion, the actions that it hides or refuses in flight, and the price of
// leaving a flight.
#include "engine/connection.h"
#include "engine/hotkeys.h"
#include "engine/tick.h"
#include "hardcore/companion.h"
#include "link/actuation.h"
#include "persist/settings_file.h"
#include "program_test.h"

namespace quirkmeter {

namespace {

class HardcoreTest : public LinkedTest {
   protected:
    HardcoreTest() {
        Settings.HardcoreActive = true;
        OwnCompanion();
    }
    void OwnCompanion(const char* title = "FSQMHC") {
        companion_ = platform::OwnWindow("ThunderRT6FormDC", title, {});
    }
    void Tick(bool onGround) {
        simulator_.Space.SetValue(0x0366, 2, onGround);
        EngineTick();
    }

    platform::WindowHandle companion_ = 0;
};

TEST_F(HardcoreTest, ItsSettingIsTheLastLineAndNeedsTheCompanion) {
    platform::DropWindow(companion_);
    Settings = {.LastProfile = "", .DisplayUpdate = true, .HardcoreMode = true};
    WriteSettings();
    EXPECT_EQ(ReadFile("Quirkmeter.ini"),
              "LASTPROFILE=\r\nDISPLAYUPDATE=YES\r\nHARDCOREMODE=YES\r\n");
    WriteFile("Quirkmeter.ini", "HARDCOREMODE=YES\r\nDISPLAYUPDATE=YES\r\n");
    WriteFile("fsqmhc.exe", "");
    Settings = {};
    EXPECT_FALSE(ReadSettings()) << "the program ends at once";
    EXPECT_EQ(Settings,
              (SettingsRecord{.LastProfile = "", .HardcoreMode = true, .HardcoreActive = true}))
        << "nothing behind that line is read";
    EXPECT_THAT(
        inprocess::TakeShellRuns(),
        ElementsAre(inprocess::ShellRun{"Open", (folder_ / "fsqmhc.exe").string(), "0", "0", 2}));
    OwnCompanion();
    EXPECT_TRUE(ReadSettings());
    EXPECT_TRUE(Settings.DisplayUpdate);
    EXPECT_THAT(inprocess::TakeShellRuns(), IsEmpty());
}

TEST_F(HardcoreTest, OnlyAWindowOfItsClassAndTitleIsTheCompanion) {
    EXPECT_TRUE(StartHardcoreCompanion());
    platform::DropWindow(companion_);
    OwnCompanion("FSQMHC 2");
    platform::OwnWindow("ThunderRT6Form", "FSQMHC", {});
    EXPECT_FALSE(StartHardcoreCompanion());
    EXPECT_FALSE(CheckHardcoreCompanion());
}

TEST_F(HardcoreTest, ACompanionThatCannotBeStartedIsReported) {
    platform::DropWindow(companion_);
    for (auto [code, told] : {std::pair{0u, 1u}, {2u, 1u}, {31u, 1u}, {32u, 1u}, {33u, 0u}}) {
        window_.Messages.clear();
        inprocess::FailCalls("ShellExecuteA", 1, 1, code);
        EXPECT_FALSE(StartHardcoreCompanion());
        EXPECT_EQ(window_.Messages, std::vector<std::string>(
                                        told, "Problem starting FSQM Hardcore Mode process (1)."))
            << "the shell returned " << code;
    }
}

TEST_F(HardcoreTest, TheListIsHiddenInFlightOnly) {
    for (auto [hardcore, onGround] :
         {std::pair{true, true}, {true, false}, {false, false}, {true, false}, {true, true}}) {
        Settings.HardcoreActive = hardcore;
        Tick(onGround);
        EXPECT_EQ(window_.ListShown, !hardcore || onGround)
            << (hardcore ? "Hardcore Mode " : "") << (onGround ? "on the ground" : "in flight");
    }
}

TEST_F(HardcoreTest, AFailedSearchDoesNotCountAsAMissingCompanion) {
    platform::DropWindow(companion_);
    inprocess::FailCalls("FindWindowA", 1, 1, platform::ErrorNotEnoughMemory);
    EXPECT_TRUE(CheckHardcoreCompanion());
    EXPECT_FALSE(CheckHardcoreCompanion()) << "it was looked for, and is not there";
}

TEST_F(HardcoreTest, AFlightWithoutTheCompanionEndsTheProgram) {
    Tick(false);
    EXPECT_EQ(window_.Unloads, 0) << "while the companion runs";
    platform::DropWindow(companion_);
    Tick(true);
    EXPECT_EQ(window_.Unloads, 0) << "on the ground";
    simulator_.Reply = 2;
    EngineState.Airborne = true;
    EngineTick();
    EXPECT_EQ(window_.Unloads, 0) << "nobody looks for it while the link is down";
    simulator_.Reply = 1;
    EngineTick();
    Fail("Inst(Vacuum)");
    simulator_.TakeWrites();
    window_.Captions.clear();
    Tick(false);
    EXPECT_EQ(window_.Unloads, 1);
    EXPECT_THAT(simulator_.TakeWrites(), IsEmpty()) << "the tick ends there";
    EXPECT_THAT(window_.Captions, IsEmpty()) << "the tick ends there";
}

TEST_F(HardcoreTest, TheLockRefusesInFlightToAvoidOrClearFailures) {
    Settings.ActiveHotkey.Key = 'A';
    inprocess::SetKey('A', -1);
    std::tuple<const char*, std::function<void()>, std::function<bool()>> rows[] = {
        {"clear all", [] { ClearAllFailures(false); }, [] { return FailureCount == 0; }},
        {"clear the last", [] { ClearLastFailure(); }, [] { return FailureCount == 1; }},
        {"deactivate", [] { PollHotkeys(); }, [] { return EngineState.Deactivated; }},
        {"lose the link", [] { SetDisconnected(); }, [] { return FailureCount == 0; }}};
    for (auto& [operation, act, done] : rows)
        for (auto [hardcore, airborne] : {std::pair{true, true}, {true, false}, {false, true}}) {
            Settings.HardcoreActive = hardcore;
            EngineState.Airborne = false;
            ClearAllFailures(true);
            EngineState.Deactivated = false;
            Fail("AP(Mach)");
            Fail("Inst(Vacuum)");
            EngineState.Airborne = airborne;
            window_.Refreshes = 0;
            inprocess::TakeSounds();
            act();
            bool locked = hardcore && airborne;
            EXPECT_EQ(done(), !locked) << operation << (hardcore ? ", Hardcore Mode" : "")
                                       << (airborne ? ", in flight" : ", on the ground");
            if (!locked) continue;
            EXPECT_THAT(inprocess::TakeSounds(), IsEmpty()) << operation;
            EXPECT_EQ(window_.Refreshes, 0) << operation;
        }
}

TEST_F(HardcoreTest, TheStatusLineHidesTheFailures) {
    Settings.DisplayFailures = true;
    Fail("Inst(Vacuum)");
    Tick(false);
    Settings.StatusHotkey.Key = 'S';
    inprocess::SetKey('S', -1);
    Tick(true);
    EXPECT_THAT(window_.Captions,
                ElementsAre("Operational. Hardcore Mode.", "Operational. Hardcore Mode.",
                            "On hold (not airborne). Hardcore Mode."))
        << "the status hotkey shows the line as it was finished";
}

TEST_F(HardcoreTest, LeavingAFlightMovesTheAircraftToZeroThreeTimes) {
    LeaveFlight();
    EXPECT_EQ(simulator_.Batches, 0) << "on the ground";
    EngineState.Airborne = true;
    Settings.HardcoreActive = false;
    LeaveFlight();
    EXPECT_EQ(simulator_.Batches, 0) << "without Hardcore Mode";
    Settings.HardcoreActive = true;
    double start = inprocess::Elapsed();
    LeaveFlight();
    EXPECT_NEAR(inprocess::Elapsed() - start, 2, 1e-6) << "a second between two moves";
    EXPECT_EQ(simulator_.Batches, 3 * 3);
    std::vector<std::string> moves;
    for (int move = 0; move < 3; ++move)
        for (const char* write :
             {"0x05DC 2 1 Slew", "0x0560 4 0 Latitude, low half", "0x0564 4 0 Latitude, high half",
              "0x0568 4 0 Longitude, low half", "0x056C 4 0 Longitude, high half",
              "0x0570 4 0 Altitude, low half", "0x0574 4 0 Altitude, high half", "0x05DC 2 0 Slew"})
            moves.emplace_back(write);
    EXPECT_EQ(simulator_.Writes, moves);
}

}  // namespace

}  // namespace quirkmeter
