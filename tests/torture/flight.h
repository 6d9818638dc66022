// A long flight in which chance, the simulator and the user act at random, checked against
// invariants: rules that hold in every flight.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <array>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "engine/connection.h"
#include "engine/program_state.h"
#include "engine/tick.h"
#include "link/actuation.h"
#include "link/sim_link.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/failure_range.h"
#include "model/main_window.h"
#include "persist/settings_file.h"
#include "platform/inprocess/inprocess.h"
#include "practice/request_block.h"
#include "practice/variables.h"
#include "scripted_chance.h"

namespace quirkmeter::torture {

namespace inprocess = platform::inprocess;
namespace variable = practice::offset;

/// Makes every random choice: returns a number from 0 to `n` - 1; `n` is 1 or more.
inline std::function<int(int n)> Choose;

/// The ways in which the simulator answers.
enum Fault { Good, Gone, Silent, Refuses, RepliesWrongly, SpoilsAnswers };

class Flight final : public MainWindow {
   public:
    Flight() {
        inprocess::Reset();
        std::filesystem::create_directory(folder_);
        inprocess::SetProgramFolder(folder_);
        for (const char* name : {"ok", "warning", "failure"})
            std::ofstream(folder_ + "/sound_" + name + ".wav");
        TheMainWindow = this;
        ScriptedDraw = [](int high, int low) {
            // Draw the ends often, because the rules change there.
            int values[] = {low, std::max(high, low), low + Choose(std::max(high - low + 1, 1))};
            return values[std::min(Choose(8), 2)];
        };
        Start();
    }
    ~Flight() {
        ResetProgramState();
        std::filesystem::remove_all(folder_);
    }

    /// One second: perhaps a change of the world, perhaps an action of the user, then the tick.
    void Step() {
        if (Choose(32) == 0) ChangeWorld();
        if (Choose(64) == 0) Act();
        Tick();
    }

    /// Returns to a simulator without faults.
    void Recover() {
        // Run three ticks, because the failing call may end the program in the first one.
        for (int tick = 0; tick < 3; ++tick) {
            SetFault(Good);
            SetCompanion(true);
            Tick();
        }
        // These are two windows, and the link's atom, mapping and view.
        Check("the link comes back", EngineState.Connected);
        Check("the objects held come back to their number", inprocess::HeldObjects() == 5);
        SimClose();
        Check("a closed link holds nothing", inprocess::HeldObjects() == 2);
    }

    std::int64_t Ticks = 0, Actions = 0;
    /// The first invariant that broke, the tick and the last five actions; empty while all hold.
    std::string Broken;

    void RefreshSubsystems() override {}
    void SetStatusCaption(const std::string& caption) override { caption_ = caption; }
    void SetSubSystemsHeading(const std::string&) override {}
    void ShowSubsystemList(bool) override {}
    platform::WindowHandle Handle() const override { return 0; }
    void Unload() override { unloaded_ = true; }
    void ShowMessage(const std::string&, MessageIcon) override {}

   private:
    using Rows = std::vector<FailureRow>;

    void Start() {
        Note("start");
        ResetProgramState();
        BuildCatalogue();
        space_ = {};
        space_.SetValue(variable::ModuleVersion, 4, 0x19980005);
        space_.SetValue(variable::SimulatorVersion, 4, 0xFADE0007);
        for (const practice::Variable& tank : practice::VariablesOf(practice::VariableKind::Tank))
            space_.SetValue(tank.Offset, tank.Size, practice::FullTank);
        SetFault(Choose(4) == 3 ? Gone : Good);
        SetCompanion(true);
        ChangeSettings();
        WriteSettings();
        ReadSettings();
        Settings.HardcoreActive = Choose(2) == 0;
        inprocess::SetDecimalSeparator(Choose(2) == 0 ? '.' : ',');
        ConnectToSimulator(false);
        ComputeFailureRanges();
    }

    // --- Invariants ---------------------------------------------------------------------------
    void Check(const char* invariant, bool holds, std::string_view seen = "no") {
        if (holds || !Broken.empty()) return;
        Broken = std::string(invariant) + ": " + std::string(seen) + "; tick " +
                 std::to_string(Ticks) + "; last actions:";
        for (const std::string& action : lastActions_) Broken += " [" + action + "]";
    }
    void Note(const std::string& action) {
        lastActions_.push_back(action);
        if (lastActions_.size() > 5) lastActions_.pop_front();
    }
    static const FailureRow* Find(const Rows& rows, int s, int n) {
        for (const FailureRow& row : rows)
            if (row.System == s && row.SubSystem == n) return &row;
        return nullptr;
    }

    void Tick() {
        Rows before(FailureList + 1, FailureList + FailureCount + 1);
        bool connected = EngineState.Connected;
        gear_ = Value(variable::Gear, 4), flaps_ = Value(variable::Flaps, 4);
        int sends = inprocess::CallCount("SendMessageTimeoutA");
        batches_ = 0;
        written_.clear();
        caption_.clear();
        inprocess::TakeSounds();
        ++Ticks;
        EngineTick();
        Rows after(FailureList + 1, FailureList + FailureCount + 1);
        CheckList(before, after);
        if (connected && EngineState.Connected && !unloaded_) {
            CheckNewFailures(before, after);
            // A sub-system that the hotkey clears may fail again in the same tick.
            if (fault_ == Good && !IsDown(Settings.ClearHotkey) &&
                inprocess::CallCount("SendMessageTimeoutA") - sends == batches_)
                CheckForce(before, after);
            CheckBatches(before, after);
        }
        CheckWhatIsSwitchedOff(before, after);
        if (std::exchange(unloaded_, false)) Start();
    }

    void CheckList(const Rows& before, const Rows& after) {
        std::size_t failed = 0;
        ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
            failed += entry.Failed;
            Check("an entry is failed exactly while it has a row",
                  entry.Failed == (Find(after, s, n) != nullptr), entry.Name);
        });
        Check("no failure has two rows", failed == after.size());
        const FailureRow* last = nullptr;
        for (const FailureRow& row : before)
            if (auto* now = Find(after, row.System, row.SubSystem)) {
                Check("rows keep their order", last < now);
                last = now;
            }
        Check("after losing the simulator no failure is left",
              EngineState.Connected || HardcoreLock() || after.empty());
    }

    void CheckNewFailures(const Rows& before, const Rows& after) {
        bool onHold = Value(variable::Pause, 2) != 0 || Value(variable::OnGround, 2) != 0 ||
                      EngineState.Deactivated;
        for (auto [s, n, counter] : after) {
            if (Find(before, s, n)) continue;
            const SubsystemEntry& entry = Catalogue[s][n];
            bool isOut = (entry.Offset == GearOffset && gear_ > 0) ||
                         (entry.Offset == FlapsOffset && flaps_ > 0);
            Check("nothing fails on hold", !onHold, entry.Name);
            Check("at 100 % nothing fails", entry.Reliability.Text() != "100", entry.Name);
            Check("gear and flaps never fail while they are out", !isOut, entry.Name);
            Check("an engine beyond the count never fails",
                  entry.Engine <= Value(variable::Engines, 2), entry.Name);
        }
    }

    void CheckForce(const Rows& before, const Rows& after) {
        for (auto [s, n, counter] : after) {
            const SubsystemEntry& entry = Catalogue[s][n];
            auto* was = Find(before, s, n);
            auto silent = was && was->Started() ? FailureMode::Stall : FailureMode::Leak;
            Check("every failure in force is written in every connected tick",
                  entry.Mode == silent || std::ranges::count(written_, entry.Offset), entry.Name);
        }
    }

    void CheckBatches(const Rows& before, const Rows& after) {
        int allowed = 2 + Messages() + IsDown(Settings.ClearHotkey);
        ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
            bool was = Find(before, s, n), is = Find(after, s, n);
            bool leaks = entry.Mode == FailureMode::Leak && (is || Level(entry) <= 0);
            allowed += leaks || (was && !is);
        });
        Check("a tick sends two batches, and one for each leak, clearing and message",
              batches_ <= allowed, std::to_string(batches_));
    }

    void CheckWhatIsSwitchedOff(const Rows& before, const Rows& after) {
        Check("a message is shown only when the user wishes or asks for it",
              Messages() == 0 || Settings.DisplayUpdate || IsDown(Settings.StatusHotkey));
        for (const Rows* rows : {&before, &after})
            for (auto [s, n, counter] : *rows) std::erase(written_, Catalogue[s][n].Offset);
        std::erase_if(written_, [](auto at) { return at == MessageText || at == MessageSeconds; });
        Check("only failures are written", written_.empty());
        Check("a failure sounds only when the user wishes",
              Settings.PlayFailureSound ||
                  !std::ranges::count(inprocess::TakeSounds(), "sound_failure.wav"));
        Check("failures are told only when the user wishes",
              (Settings.DisplayFailures && !Settings.HardcoreActive) ||
                  caption_.find("failures") == std::string::npos,
              caption_);
    }

    bool IsDown(const Hotkey& hotkey) { return hotkey.Key != 0 && keys_[hotkey.Key] < 0; }
    int Messages() const { return static_cast<int>(std::ranges::count(written_, MessageText)); }
    std::int32_t Value(std::uint32_t offset, std::uint32_t size) const {
        return static_cast<std::int32_t>(space_.Value(offset, size));
    }
    std::int32_t Level(const SubsystemEntry& entry) const {
        return Value(static_cast<std::uint32_t>(entry.Offset), 4);
    }

    // --- The world ----------------------------------------------------------------------------
    std::intptr_t Answer() {
        ++batches_;
        if (fault_ == Refuses) return 0;
        practice::CarryOut(SimLink.View, BlockSize, space_,
                           [this](const practice::AppliedWrite& write) {
                               written_.push_back(static_cast<std::int32_t>(write.Offset));
                           });
        if (fault_ == SpoilsAnswers) SimLink.View[0] = std::byte{9};
        return fault_ == RepliesWrongly ? 2 : 1;
    }
    void SetFault(Fault fault) {
        if ((fault == Silent) != (std::exchange(fault_, fault) == Silent))
            inprocess::FailCalls("SendMessageTimeoutA", 1, fault == Silent ? 1 << 30 : 0, 0);
        if (fault == Gone || simulator_ == 0) platform::DropWindow(std::exchange(simulator_, 0));
        if (fault != Gone && simulator_ == 0)
            simulator_ = platform::OwnWindow("UIPCMAIN", "", [this](auto...) { return Answer(); });
    }
    void SetCompanion(bool there) {
        platform::DropWindow(companion_);
        if (there) companion_ = platform::OwnWindow("ThunderRT6FormDC", "FSQMHC", nullptr);
    }
    void ChangeWorld() {
        constexpr unsigned Variables[][6] = {
            {870, 2, 0, 0, 0, 1},           {612, 2, 0, 0, 0, 1},
            {3048, 4, 0, 0, 16383, ~0u},    {3036, 4, 0, 0, 16383, ~0u},
            {2796, 2, 0, 1, 2, 4},          {2932, 4, 0, 9000, 8388608, ~4u},
            {2940, 4, 8388608, 7000, 0, 1}, {4700, 4, 8388608, 1, 6000, 2000000000}};
        int what = Choose(11), value = Choose(4);
        Note("world " + std::to_string(what) + " " + std::to_string(value));
        if (what < 8)
            space_.SetValue(Variables[what][0], Variables[what][1], Variables[what][2 + value]);
        if (what == 8) SetFault(Choose(3) == 0 ? static_cast<Fault>(Choose(6)) : Good);
        if (what == 9) SetCompanion(value != 0);
        for (int key : {65, 66, 16, 17}) {
            constexpr std::int16_t States[] = {0, 0, 0, 1, -32768, -32767};
            if (what == 10) inprocess::SetKey(key, keys_[key] = States[Choose(6)]);
        }
    }

    // --- The user -----------------------------------------------------------------------------
    void Act() {
        ++Actions;
        constexpr const char* Names[] = {"reliability", "reliabilities", "all reliabilities",
                                         "test",        "clear",         "clear all",
                                         "settings",    "restart",       "connect"};
        int what = Choose(9), s = 1 + Choose(7), n = 1 + Choose(SubsystemCount(s));
        // Ticks go on while a dialog is open.
        for (int ticks = what < 5 ? Choose(4) : 0; ticks > 0; --ticks) Tick();
        Note(Names[what] + (" " + std::to_string(s)) + "#" + std::to_string(n));
        if (what == 0) SetReliabilities(s, n);
        if (what == 1 && !HardcoreLock()) SetReliabilities(s, 0);
        if (what == 2 && !HardcoreLock()) SetReliabilities(0, 0);
        if (what == 3 && EngineState.Connected && !Catalogue[s][n].Failed) AddFailure(s, n);
        if (what == 4) ClearFailure(s, n);
        if (what == 5) ClearAllFailures(false);
        if (what == 6) ChangeSettings();
        if (what == 7 && Choose(5) == 0) Start();
        if (what == 8) ConnectToSimulator(false);
    }
    // Sets one sub-system, one system (`subsystem` 0) or all (both 0).
    void SetReliabilities(int system, int subsystem) {
        constexpr float Percent[] = {0, 12.5F, 50, 90, 99, 99.999F, 100, 100};
        constexpr float Hours[] = {0, 0.001F, 0.0125F, 0.1F, 0.5F, 1, 24, 999};
        float percent = Percent[Choose(8)],
              hours = Choose(2) ? Hours[Choose(8)] : static_cast<float>(Choose(999000)) / 1000;
        ForEachSubsystem([&](int s, int n, SubsystemEntry& entry) {
            if ((system != 0 && s != system) || (subsystem != 0 && n != subsystem)) return;
            entry.Reliability = NumberText(percent);
            entry.Hours = NumberText(hours);
        });
        ComputeFailureRanges();
    }
    void ChangeSettings() {
        Settings.DisplayUpdate = Choose(2) == 0;
        Settings.DisplayFailures = Choose(3) != 0;
        Settings.PlayFailureSound = Choose(2) == 0;
        for (Hotkey* hotkey :
             {&Settings.StatusHotkey, &Settings.ClearHotkey, &Settings.ActiveHotkey}) {
            *hotkey = {std::array{0, 65, 65, 66}[static_cast<unsigned>(Choose(4))], 0};
            if (hotkey->Key != 0) hotkey->Mods = Choose(6) - 1;
        }
    }

    static constexpr std::int32_t MessageText = 0x3380, MessageSeconds = 0x32FA;

    std::string folder_ = std::filesystem::temp_directory_path().generic_string() + "/flight-" +
                          std::to_string(getpid());
    practice::OffsetSpace space_;
    Fault fault_ = Good;
    platform::WindowHandle simulator_ = 0, companion_ = 0;
    std::map<int, std::int16_t> keys_;
    std::deque<std::string> lastActions_;
    bool unloaded_ = false;
    std::int32_t gear_ = 0, flaps_ = 0;  // at the beginning of the tick
    // The effects of the last tick.
    int batches_ = 0;
    std::vector<std::int32_t> written_;
    std::string caption_;
};

}  // namespace quirkmeter::torture
