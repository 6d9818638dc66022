// A long flight in which chance, the simulator and the user do as they like, held against
// invariants: what is true of every flight, whatever happens in it.
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
#include "persist/profile.h"
#include "persist/settings_file.h"
#include "platform/inprocess/inprocess.h"
#include "practice/request_block.h"
#include "practice/variables.h"
#include "scripted_chance.h"

namespace quirkmeter::torture {

namespace inprocess = platform::inprocess;
namespace variable = practice::offset;

/// Whatever is left to chance: a number below `n`, which is 1 or more.
inline std::function<int(int n)> Choose;

/// How the simulator's end of the wire behaves.
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
            // The ends come often, since the rules turn there.
            int values[] = {low, std::max(high, low), low + Choose(std::max(high - low + 1, 1))};
            return values[std::min(Choose(8), 2)];
        };
        Start();
    }
    ~Flight() {
        ResetProgramState();
        std::filesystem::remove_all(folder_);
    }

    /// A second: the world may change, the user may act, the tick.
    void Step() {
        if (Choose(32) == 0) ChangeWorld();
        if (Choose(64) == 0) Act();
        Tick();
    }

    /// Back to a simulator that is well.
    void Recover() {
        SetFault(Good);
        SetCompanion(true);
        Tick();
        Tick();
        // Two windows; atom, mapping and view of the link.
        Check("the link comes back", EngineState.Connected);
        Check("the objects held come back to their number", inprocess::HeldObjects() == 5);
        SimClose();
        Check("a closed link holds nothing", inprocess::HeldObjects() == 2);
    }

    std::int64_t Ticks = 0, Actions = 0;
    /// The first invariant that did not hold, the tick and the last five actions; empty while all
    /// do.
    std::string Broken;

    void RefreshSubsystems() override {}
    void SetStatusCaption(const std::string& caption) override { captions_.push_back(caption); }
    void SetSubSystemsHeading(const std::string&) override {}
    void ShowSubsystemList(bool show) override { listShown_ = show; }
    platform::WindowHandle Handle() const override { return 0; }
    void Unload() override { unloaded_ = true; }
    void ShowMessage(const std::string&, MessageIcon) override {}

   private:
    void Start() {
        ResetProgramState();
        Note("start");
        space_ = {};
        space_.SetValue(variable::ModuleVersion, 4, 0x19980005);
        space_.SetValue(variable::SimulatorVersion, 4, 0xFADE0007);
        for (const practice::Variable& tank : practice::VariablesOf(practice::VariableKind::Tank))
            space_.SetValue(tank.Offset, tank.Size, practice::FullTank);
        listShown_ = true;
        SetFault(Choose(4) == 3 ? Gone : Good);
        SetCompanion(true);
        ChangeSettings();
        SettingsRecord written = Settings;
        WriteSettings();
        Settings = {};
        ReadSettings();
        Check("settings are read as they were written", Settings == written);
        Settings.HardcoreActive = Choose(2) == 0;
        inprocess::SetDecimalSeparator(Choose(2) == 0 ? '.' : ',');
        BuildCatalogue();
        ConnectToSimulator(false);
        ComputeFailureRanges();
        inprocess::TakeSounds();
    }

    // --- Invariants ---------------------------------------------------------------------------
    void Check(const std::string& invariant, bool holds, const std::string& seen = {}) {
        if (holds || !Broken.empty()) return;
        Broken = invariant + (seen.empty() ? "" : ", but: " + seen) + "; tick " +
                 std::to_string(Ticks) + "; last actions:";
        for (const std::string& action : lastActions_) Broken += " [" + action + "]";
    }
    void Note(const std::string& action) {
        lastActions_.push_back(action);
        if (lastActions_.size() > 5) lastActions_.pop_front();
    }

    static std::string Label(const FailureRow& row) {
        return std::string(SystemNames[row.System]) + "(" +
               std::string(Catalogue[row.System][row.SubSystem].Name) + ")";
    }
    static const FailureRow* Find(const std::vector<FailureRow>& rows, const FailureRow& row) {
        for (const FailureRow& other : rows)
            if (other.System == row.System && other.SubSystem == row.SubSystem) return &other;
        return nullptr;
    }

    void Tick() {
        std::vector<FailureRow> before(FailureList + 1, FailureList + FailureCount + 1);
        bool connected = EngineState.Connected;
        int sends = inprocess::CallCount("SendMessageTimeoutA");
        batches_ = 0;
        written_.clear();
        captions_.clear();
        inprocess::TakeSounds();
        ++Ticks;
        EngineTick();
        std::vector<FailureRow> after(FailureList + 1, FailureList + FailureCount + 1);
        CheckFailureList(before, after);
        if (connected && EngineState.Connected && !unloaded_) {
            for (const FailureRow& row : after)
                if (!Find(before, row)) CheckNewFailure(row);
            // What the hotkey clears may fail again in the same tick.
            if (fault_ == Good && !IsDown(Settings.ClearHotkey) &&
                inprocess::CallCount("SendMessageTimeoutA") - sends == batches_)
                CheckForce(before, after);
            CheckBatches(before, after);
        }
        CheckWhatIsSwitchedOff(before, after);
        if (unloaded_) Start();
        unloaded_ = false;
    }

    void CheckFailureList(const std::vector<FailureRow>& before,
                          const std::vector<FailureRow>& after) {
        std::size_t failed = 0;
        ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
            failed += entry.Failed;
            FailureRow row{s, n};
            Check("an entry is failed exactly while it has a row",
                  entry.Failed == (Find(after, row) != nullptr), Label(row));
        });
        Check("no failure has two rows", failed == after.size());
        Check("rows out of use are empty",
              std::all_of(FailureList + FailureCount + 1, std::end(FailureList),
                          [](const FailureRow& row) { return row == FailureRow{}; }));
        const FailureRow* last = nullptr;
        for (const FailureRow& row : before)
            if (const FailureRow* now = Find(after, row)) {
                Check("rows keep their order", last < now, Label(row));
                last = now;
            }
        Check("after losing the simulator no failure is left",
              EngineState.Connected || HardcoreLock() || after.empty(),
              std::to_string(after.size()) + " failures");
        Check("the list is hidden in a Hardcore flight", listShown_ || Settings.HardcoreActive);
    }

    void CheckNewFailure(const FailureRow& row) {
        const SubsystemEntry& entry = Catalogue[row.System][row.SubSystem];
        Check("nothing fails on hold",
              Value(variable::Pause, 2) == 0 && Value(variable::OnGround, 2) == 0 &&
                  !EngineState.Deactivated,
              Label(row));
        Check("at 100 % nothing fails", entry.Reliability.Text() != "100", Label(row));
        Check("gear and flaps never fail while they are out",
              !IsRetractable(entry) || Value(static_cast<std::uint32_t>(entry.Offset), 4) <= 0,
              Label(row));
        Check("an engine beyond the count never fails",
              entry.Engine <= static_cast<int>(Value(variable::Engines, 2)), Label(row));
    }

    void CheckForce(const std::vector<FailureRow>& before, const std::vector<FailureRow>& after) {
        for (const FailureRow& row : after) {
            const SubsystemEntry& entry = Catalogue[row.System][row.SubSystem];
            const FailureRow* was = Find(before, row);
            bool started = was && was->Started();
            if (started ? entry.Mode == FailureMode::Stall : entry.Mode == FailureMode::Leak)
                continue;
            Check("every failure in force is written in every connected tick",
                  std::ranges::count(written_, entry.Offset) > 0, Label(row));
        }
    }

    void CheckBatches(const std::vector<FailureRow>& before, const std::vector<FailureRow>& after) {
        int allowed = 2 + Messages() + IsDown(Settings.ClearHotkey);
        ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
            bool was = Find(before, {s, n}), is = Find(after, {s, n});
            bool leaks = is || Value(static_cast<std::uint32_t>(entry.Offset), 4) <= 0;
            allowed += (was && !is) || (entry.Mode == FailureMode::Leak && leaks);
        });
        Check("a tick sends two batches, and one for each leak, clearing and message",
              batches_ <= allowed, std::to_string(batches_) + " batches");
    }

    void CheckWhatIsSwitchedOff(const std::vector<FailureRow>& before,
                                const std::vector<FailureRow>& after) {
        Check("nothing is shown in the simulator that the user did not wish or ask for",
              Messages() == 0 || Settings.DisplayUpdate || IsDown(Settings.StatusHotkey));
        auto fails = [this](const FailureRow& row) {
            std::erase(written_, Catalogue[row.System][row.SubSystem].Offset);
        };
        std::ranges::for_each(before, fails);
        std::ranges::for_each(after, fails);
        std::erase(written_, MessageText);
        std::erase(written_, MessageSeconds);
        Check("only failures are written", written_.empty(),
              "offset " + (written_.empty() ? "" : std::to_string(written_.front())));
        auto sounds = inprocess::TakeSounds();
        Check("a failure sounds only when the user wishes",
              Settings.PlayFailureSound || !std::ranges::count(sounds, "sound_failure.wav"));
        bool told = Settings.DisplayFailures && !Settings.HardcoreActive;
        if (!captions_.empty())
            Check("failures are told only when the user wishes",
                  told || captions_.back().find("failures") == std::string::npos, captions_.back());
    }

    bool IsDown(const Hotkey& hotkey) { return hotkey.Key != 0 && keys_[hotkey.Key] < 0; }
    int Messages() const { return static_cast<int>(std::ranges::count(written_, MessageText)); }
    std::int32_t Value(std::uint32_t offset, std::uint32_t size) const {
        return static_cast<std::int32_t>(space_.Value(offset, size));
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
        constexpr int Variables[][6] = {{870, 2, 0, 0, 0, 1},
                                        {612, 2, 0, 0, 0, 1},
                                        {3048, 4, 0, 0, 16383, -1},
                                        {3036, 4, 0, 0, 16383, -1},
                                        {2796, 2, 0, 1, 2, 4},
                                        {2932, 4, 0, 9000, 8388608, -5},
                                        {2940, 4, 8388608, 7000, 0, 5000},
                                        {4700, 4, 8388608, 1, 6000, 2000000000}};
        int what = Choose(11);
        if (what < 8) {
            auto [offset, size, value] =
                std::array{Variables[what][0], Variables[what][1], Variables[what][2 + Choose(4)]};
            space_.SetValue(static_cast<unsigned>(offset), static_cast<unsigned>(size),
                            static_cast<unsigned>(value));
            Note("variable " + std::to_string(offset) + " is " + std::to_string(value));
        }
        if (what == 8) {
            SetFault(Choose(3) == 0 ? static_cast<Fault>(Choose(6)) : Good);
            Note("simulator fault " + std::to_string(fault_));
        }
        if (what == 9) SetCompanion(Choose(4) != 0);
        if (what > 8) Note(what == 9 ? "companion" : "keys");
        for (int key : {65, 66, 16, 17}) {
            constexpr int States[] = {0, 0, 0, 1, -32768, -32767};
            if (what != 10) continue;
            keys_[key] = static_cast<std::int16_t>(States[Choose(6)]);
            inprocess::SetKey(key, keys_[key]);
        }
    }

    // --- The user -----------------------------------------------------------------------------
    void Act() {
        ++Actions;
        int what = Choose(12), s = 1 + Choose(7), n = 1 + Choose(SubsystemCount(s));
        // Ticks go on while a dialog is open.
        for (int ticks = what < 7 ? Choose(4) : 0; ticks > 0; --ticks) Tick();
        bool refused = HardcoreLock() && (what == 1 || what == 2 || what == 5);
        constexpr const char* Names[] = {"reliability of one",
                                         "reliabilities of a system",
                                         "reliabilities of all",
                                         "test failure",
                                         "clear failure",
                                         "open profile",
                                         "save profile",
                                         "clear all failures",
                                         "settings",
                                         "end and start",
                                         "connect",
                                         "nothing"};
        Note(std::string(Names[what]) + " " + std::to_string(s) + "#" + std::to_string(n) +
             (refused ? " (refused)" : ""));
        if (what < 3 && !refused) SetReliabilities(what == 2 ? 0 : s, what == 0 ? n : 0);
        if (what == 3 && EngineState.Connected && !Catalogue[s][n].Failed) AddFailure(s, n);
        if (what == 4) ClearFailure(s, n);
        if (what == 5 && !refused) OpenProfile();
        if (what == 6) {
            Settings.LastProfile = folder_ + (Choose(4) ? "/saved.qmp" : "/nowhere/saved.qmp");
            WriteProfile();
        }
        if (what == 7) ClearAllFailures(false);
        if (what == 8) ChangeSettings();
        if (what == 9 && Choose(5) == 0) Start();
        if (what == 10) ConnectToSimulator(false);
    }
    // Of one sub-system, of one system or of all: what is not meant is 0.
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
    void OpenProfile() {
        constexpr const char* Fields[] = {"100", "0",   "50",   "99.5", "99,999", " 12 ", "150",
                                          "-1",  "1e1", "0.25", "7",    "x",      ""};
        Settings.LastProfile = folder_ + (Choose(4) ? "/opened.qmp" : "/saved.qmp");
        if (Settings.LastProfile.ends_with("opened.qmp")) {
            std::ofstream file(Settings.LastProfile, std::ios::binary);
            for (int lines = Choose(6); lines > 0; --lines) {
                int s = Choose(10), n = Choose(17);
                const char* reliability = Fields[Choose(12)];
                file << s << '#' << n << '#' << reliability << '#' << Fields[Choose(13)] << "\r\n";
            }
        }
        ReadProfile();
        ForEachSubsystem([this](int, int, const SubsystemEntry& entry) {
            Check("reliabilities are 0 to 100 and hours 0 to 999",
                  entry.Reliability.ValueOr(-1) >= 0 && entry.Reliability.ValueOr(-1) <= 100 &&
                      entry.Hours.ValueOr(-1) >= 0 && entry.Hours.ValueOr(-1) <= 999,
                  std::string(entry.Name));
        });
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
    bool listShown_ = true, unloaded_ = false;
    // What the tick did.
    int batches_ = 0;
    std::vector<std::int32_t> written_;
    std::vector<std::string> captions_;
};

}  // namespace quirkmeter::torture
