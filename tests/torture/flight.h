// A flight of the program and of the naive model side by side: whatever chance, the simulator and
// the user do is done to both, and what both do is compared.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
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
#include "scripted_chance.h"
#include "torture/naive_model.h"

namespace quirkmeter {

namespace torture {

/// Whatever is left to chance: a number below `n`, which is 1 or more.
inline std::function<int(int n)> Choose;

// What the program drew, for the model to draw again.
inline std::vector<std::array<int, 3>> Draws;

namespace inprocess = platform::inprocess;

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
            int value = values[std::min(Choose(8), 2)];
            Draws.push_back({high, low, value});
            return value;
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

    /// Back to a simulator that is well; true when the program is well, too, two ticks later.
    bool Recovers() {
        SetMood(Good);
        SetCompanion(true);
        Tick();
        Tick();
        bool listed = true;
        int rows = 0;
        ForEachSubsystem([&](int sys, int n, SubsystemEntry& entry) {
            rows += entry.Failed;
            listed = listed && entry.Failed == (FindFailure(sys, n) != 0);
        });
        // Two windows; atom, mapping and view of the link.
        bool held = EngineState.Connected && inprocess::HeldObjects() == 5;
        SimClose();
        return listed && rows == FailureCount && held && inprocess::HeldObjects() == 2;
    }

    std::int64_t Ticks = 0, Actions = 0;
    std::string Difference;  // the first one; empty while there is none

    void RefreshSubsystems() override { log_ += "r"; }
    void SetStatusCaption(const std::string& caption) override { log_ += "c" + caption; }
    void SetSubSystemsHeading(const std::string& heading) override { log_ += "h" + heading; }
    void ShowSubsystemList(bool show) override {
        if (std::exchange(listShown_, show) != show) log_ += show ? "L" : "l";
    }
    platform::WindowHandle Handle() const override { return 0; }
    void Unload() override { log_ += "u"; }
    void ShowMessage(const std::string& text, MessageIcon) override { log_ += "m" + text; }

   private:
    void Start() {
        ResetProgramState();
        NaiveModel before = std::exchange(model_, {});
        model_.Files = before.Files;
        model_.Keys = before.Keys;
        model_.Simulator = before.Simulator;
        model_.KeysAskedFor = before.KeysAskedFor;
        space_ = {};
        model_.RandomInRange = [this](int high, int low) {
            std::array<int, 3> drawn =
                redrawn_ < Draws.size() ? Draws[redrawn_++] : std::array{0, 0, low};
            if (drawn[0] != high || drawn[1] != low) drawnAlike_ = false;
            return drawn[2];
        };
        Poke(0x3304, 4, 0x19980005);
        Poke(0x3308, 4, static_cast<int>(0xFADE0007));
        SetMood(Choose(4) == 3 ? Gone : Good);
        SetCompanion(true);
        listShown_ = true;
        ChangeSettings();
        SettingsRecord written = Settings;
        WriteSettings();
        Settings = {};
        ReadSettings();
        Same("settings", Settings == written, true);
        Settings.HardcoreActive = model_.HardcoreActive = Choose(2) == 0;
        model_.Separator = Choose(2) == 0 ? '.' : ',';
        inprocess::SetDecimalSeparator(model_.Separator);
        BuildCatalogue();
        ConnectToSimulator(false);
        ComputeFailureRanges();
        model_.ConnectToSimulator(false);
        model_.ComputeFailureRanges();
        Compare(true);
    }

    void Tick() {
        EngineTick();
        model_.Tick();
        Compare(++Ticks % 10 == 0);
        if (model_.Ended) Start();
    }

    // --- The world ----------------------------------------------------------------------------
    void Poke(int offset, int size, int value) {
        space_.SetValue(static_cast<unsigned>(offset), static_cast<unsigned>(size),
                        static_cast<unsigned>(value));
        for (auto rest = static_cast<unsigned>(value); size-- > 0; rest >>= 8)
            model_.Space[static_cast<unsigned>(offset++)] = static_cast<char>(rest);
    }
    std::intptr_t Answer() {
        log_ += "b";
        if (model_.Simulator == Refuses) return 0;
        practice::CarryOut(
            SimLink.View, BlockSize, space_, [this](const practice::AppliedWrite& write) {
                log_ += "w" + std::to_string(write.Offset) + "=";
                log_.append(reinterpret_cast<const char*>(write.Bytes.data()), write.Bytes.size());
            });
        if (model_.Simulator == SpoilsAnswers) SimLink.View[0] = std::byte{9};
        return model_.Simulator == RepliesWrongly ? 2 : 1;
    }
    void SetMood(Mood mood) {
        if ((mood == Silent) != (std::exchange(model_.Simulator, mood) == Silent))
            inprocess::FailCalls("SendMessageTimeoutA", 1, mood == Silent ? 1 << 30 : 0, 0);
        if (mood == Gone || simulator_ == 0) {
            platform::DropWindow(std::exchange(simulator_, 0));
            model_.Linked = false;
        }
        if (mood != Gone && simulator_ == 0)
            simulator_ = platform::OwnWindow("UIPCMAIN", "", [this](auto...) { return Answer(); });
    }
    void SetCompanion(bool there) {
        model_.Companion = there;
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
        if (what < 8) Poke(Variables[what][0], Variables[what][1], Variables[what][2 + Choose(4)]);
        if (what == 8) SetMood(Choose(3) == 0 ? static_cast<Mood>(Choose(6)) : Good);
        if (what == 9) SetCompanion(Choose(4) != 0);
        for (int key : {65, 66, 16, 17}) {
            constexpr int States[] = {0, 0, 0, 1, -32768, -32767};
            if (what == 10)
                inprocess::SetKey(key,
                                  static_cast<std::int16_t>(model_.Keys[key] = States[Choose(6)]));
        }
    }

    // --- The user -----------------------------------------------------------------------------
    void Act() {
        ++Actions;
        int what = Choose(12), row = Choose(62);
        bool refused = model_.Lock() && (what == 1 || what == 2 || what == 5);
        // Ticks go on while a dialog is open.
        for (int ticks = what < 7 ? Choose(4) : 0; ticks > 0; --ticks) Tick();
        Entry& theirs = model_.Catalogue[static_cast<unsigned>(row)];
        int s = theirs.System, n = theirs.SubSystem;
        if (what < 3 && !refused) SetReliabilities(what == 2 ? 0 : s, what == 0 ? n : 0);
        if (what == 3 && model_.Connected) {
            if (!Catalogue[s][n].Failed) AddFailure(s, n);
            if (theirs.Failed.empty()) model_.AddFailure(theirs);
        }
        if (what == 4) ClearFailure(s, n), model_.ClearFailure(theirs);
        if (what == 5 && !refused) OpenProfile();
        if (what == 6) {
            Settings.LastProfile = model_.LastProfile =
                folder_ + (Choose(4) ? "/saved.qmp" : "/nowhere/saved.qmp");
            WriteProfile(), model_.WriteProfile();
        }
        if (what == 7) ClearAllFailures(false), model_.ClearFailures(true, false);
        if (what == 8) ChangeSettings();
        if (what == 9 && Choose(5) == 0) Start();
        if (what == 10) ConnectToSimulator(false), model_.ConnectToSimulator(false);
        Compare(true);
    }
    // Of one sub-system, of one system or of all: what is not meant is 0.
    void SetReliabilities(int s, int n) {
        constexpr float Percent[] = {0, 12.5F, 50, 90, 99, 99.999F, 100, 100};
        constexpr float Hours[] = {0, 0.001F, 0.0125F, 0.1F, 0.5F, 1, 24, 999};
        float percent = Percent[Choose(8)],
              hours = Choose(2) ? Hours[Choose(8)] : static_cast<float>(Choose(999000)) / 1000;
        for (Entry& theirs : model_.Catalogue) {
            if ((s != 0 && theirs.System != s) || (n != 0 && theirs.SubSystem != n)) continue;
            theirs.Reliability = model_.TextOf(percent), theirs.Hours = model_.TextOf(hours);
            Catalogue[theirs.System][theirs.SubSystem].Reliability = NumberText(percent);
            Catalogue[theirs.System][theirs.SubSystem].Hours = NumberText(hours);
        }
        ComputeFailureRanges();
        RefreshSubsystems();
        model_.RefreshSubsystems(false);
    }
    void OpenProfile() {
        constexpr const char* Fields[] = {"100", "0",   "50",   "99.5", "99,999", " 12 ", "150",
                                          "-1",  "1e1", "0.25", "7",    "x",      ""};
        std::string path = folder_ + (Choose(4) ? "/opened.qmp" : "/saved.qmp"), text;
        for (int lines = Choose(6); lines > 0; --lines)
            text += std::to_string(Choose(10)) + "#" + std::to_string(Choose(17)) + "#" +
                    Fields[Choose(12)] + "#" + Fields[Choose(13)] + "\r\n";
        if (path.ends_with("opened.qmp"))
            std::ofstream(path, std::ios::binary) << (model_.Files[path] = text);
        Settings.LastProfile = model_.LastProfile = path;
        ReadProfile(), model_.ReadProfile();
    }
    void ChangeSettings() {
        Settings.DisplayUpdate = model_.DisplayUpdate = Choose(2) == 0;
        Settings.DisplayFailures = model_.DisplayFailures = Choose(3) != 0;
        Settings.PlayFailureSound = model_.PlayFailureSound = Choose(2) == 0;
        for (int i = 0; i < 3; ++i)
            model_.Hotkey[i] = std::array{0, 65, 65, 66}[static_cast<unsigned>(Choose(4))],
            model_.HotkeyMods[i] = model_.Hotkey[i] ? Choose(6) - 1 : 0;
        Settings.StatusHotkey = {model_.Hotkey[0], model_.HotkeyMods[0]};
        Settings.ClearHotkey = {model_.Hotkey[1], model_.HotkeyMods[1]};
        Settings.ActiveHotkey = {model_.Hotkey[2], model_.HotkeyMods[2]};
    }

    // --- What both did ------------------------------------------------------------------------
    template <typename T>
    void Same(const char* what, const T& ours, const T& theirs) {
        if (ours == theirs || !Difference.empty()) return;
        Difference = (std::ostringstream() << what << ": " << ours << " for " << theirs).str();
    }
    void Compare(bool periods) {
        std::string sounds;
        for (const std::string& sound : inprocess::TakeSounds()) sounds += sound + " ";
        Same("seen", log_, model_.Log);
        Same("sounds", sounds, model_.Sounds);
        Same("keys", inprocess::CallCount("GetAsyncKeyState"), model_.KeysAskedFor);
        Same("draws", drawnAlike_ && Draws.size() == redrawn_, true);
        Same("status", EngineState.StatusText, model_.StatusText);
        Same("profile", Settings.LastProfile, model_.LastProfile);
        Same("deactivated", EngineState.Deactivated, model_.Deactivated);
        Same("failures", static_cast<std::size_t>(FailureCount), model_.FailureList.size());
        for (int i = 1; i <= FailureCount && Difference.empty(); ++i) {
            const auto& [of, counter] = model_.FailureList[static_cast<unsigned>(i - 1)];
            int number = counter.empty() ? FailureRow::NotStarted : NaiveModel::Int(counter);
            Same("row", FailureList[i] == FailureRow{of->System, of->SubSystem, number}, true);
        }
        Same("row behind the last", FailureList[FailureCount + 1] == FailureRow{}, true);
        for (const Entry& theirs : model_.Catalogue) {
            if (!periods) break;
            const SubsystemEntry& ours = Catalogue[theirs.System][theirs.SubSystem];
            Same("reliability", ours.Reliability.Text(), theirs.Reliability);
            Same("hours", ours.Hours.Text(), theirs.Hours);
            Same("failed", ours.Failed, theirs.Failed == "YES");
            Same("low", ours.RangeLow, NaiveModel::Int(theirs.RangeLow));
            Same("high", ours.RangeHigh, NaiveModel::Int(theirs.RangeHigh));
            Same("draw at", ours.DrawAt, NaiveModel::Int(theirs.DrawAt));
            Same("elapsed", ours.Elapsed, NaiveModel::Int(theirs.Elapsed));
        }
        for (std::string* log : {&log_, &model_.Log, &model_.Sounds}) log->clear();
        Draws.clear();
        redrawn_ = 0;
    }

    std::string log_, folder_ = std::filesystem::temp_directory_path().generic_string() +
                                "/flight-" + std::to_string(getpid());
    NaiveModel model_;
    practice::OffsetSpace space_;
    platform::WindowHandle simulator_ = 0, companion_ = 0;
    bool listShown_ = true, drawnAlike_ = true;
    std::size_t redrawn_ = 0;
};

}  // namespace torture

}  // namespace quirkmeter
