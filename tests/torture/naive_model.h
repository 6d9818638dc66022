// The rules of the program told once more, as naively as can be, in tables of texts that are walked
// from their start. It shares no code with the program, so that each finds the other's mistakes.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace quirkmeter::torture {

// A system a line; of each sub-system its name, offset, value, size, mode and engine.
inline constexpr char Definitions[] =
    R"(AP:Airspeed,2012,0,4,2,0;Altitude,2000,0,4,2,0;Approach,2048,0,4,2,0;Attitude,2008,0,4,2,0;Autothrottle,2064,0,4,2,0;Back Course,2052,0,4,2,0;Glideslope,2044,0,4,2,0;Heading,1992,0,4,2,0;Mach,2020,0,4,2,0;Master,1980,0,4,2,0;Navigation,1988,0,4,2,0;Vertical Speed,2028,0,4,2,0;Wing Leveler,1984,0,4,2,0;Yaw Damper,2056,0,4,2,0;
Ctrl:Aileron,12554,2,1,1,0;Elevator,12554,1,1,1,0;Elevator Trim,3008,0,2,2,0;Flaps,3036,0,4,2,0;Landing Gear,3048,0,4,2,0;Rudder,12554,4,1,1,0;Throttle,12554,8,1,1,0;
Elec:Battery,12546,0,1,2,0;Entire System,2922,1,1,3,0;Alt/Gen (Engine 1),15224,0,4,2,1;Alt/Gen (Engine 2),15032,0,4,2,2;Alt/Gen (Engine 3),14840,0,4,2,3;Alt/Gen (Engine 4),14648,0,4,2,4;Master Avionics,12547,0,1,2,0;
Eng:Engine 1 (Fail),2923,1,1,3,1;Engine 1 (Stall),2192,0,2,5,1;Engine 2 (Fail),2923,1,1,3,2;Engine 2 (Stall),2344,0,2,5,2;Engine 3 (Fail),2923,1,1,3,3;Engine 3 (Stall),2496,0,2,5,3;Engine 4 (Fail),2923,1,1,3,4;Engine 4 (Stall),2648,0,2,5,4;
Fuel:Pump(s),12548,0,1,2,0;Tank Center (Leak),2932,0,4,4,0;Tank Left (Leak),2940,0,4,4,0;Tank Left Aux (Leak),2948,0,4,4,0;Tank Left Tip (Leak),2956,0,4,4,0;Tank Right (Leak),2964,0,4,4,0;Tank Right Aux (Leak),2972,0,4,4,0;Tank Right Tip (Leak),2980,0,4,4,0;Tank Center 2 (Leak),4676,0,4,4,0;Tank Center 3 (Leak),4684,0,4,4,0;Tank External 1 (Leak),4692,0,4,4,0;Tank External 2 (Leak),4700,0,4,4,0;
Inst:Airspeed,2917,1,1,3,0;Altimiter,2918,1,1,3,0;Attitude,2919,1,1,3,0;Fuel,2924,1,1,3,0;Heading,2925,1,1,3,0;Magnetic Compass,2921,1,1,3,0;Pitot Static,2929,1,1,3,0;Turn Coordinator,2930,1,1,3,0;Vacuum,2931,1,1,3,0;Vertical Speed,2926,1,1,3,0;
Radio:ADF,2916,1,1,3,0;COM,2920,1,1,3,0;NAV,2928,1,1,3,0;Transponder,2927,1,1,3,0;
)";

struct Entry {
    int System, SubSystem;
    std::string SystemName, Name, Offset, FailValue, Size, Mode, Engine, Failed;
    std::string Reliability = "100", Hours = "1", RangeLow, RangeHigh, DrawAt, Elapsed = "0";
};

struct Failure {
    Entry* Of;
    std::string Counter{};
};

/// How the simulator's end of the wire behaves.
enum Mood { Good, Gone, Silent, Refuses, RepliesWrongly, SpoilsAnswers };

struct NaiveModel {
    std::vector<Entry> Catalogue;
    std::vector<Failure> FailureList;
    std::size_t LastFailureCount = 0;
    int EngineCount = 0, DrawDivider = 0, Hotkey[3] = {}, HotkeyMods[3] = {};
    bool Connected = false, SimPaused = false, Airborne = false, Deactivated = false, Open = false;
    bool DisplayUpdate = false, DisplayFailures = false, PlayFailureSound = false;
    bool HardcoreActive = false, Companion = true, ListShown = true, Ended = false;
    bool Queued = false, Linked = false;      // to the window that is there
    std::map<std::string, int> Disconnected;  // the bits in force by their texts
    std::string StatusText, LastShownStatus, LastProfile;

    // The world around it, with chance, which is asked for the upper bound first; and what the world
    // saw: b a batch, w a write, r and R refreshes, l and L the list hidden and shown, c the status
    // caption, h the heading, m a message, u the end.
    Mood Simulator = Good;
    std::string Space = std::string(0x10000, '\0');
    std::map<int, int> Keys;
    int KeysAskedFor = 0;  // which forgets that they were tapped
    std::map<std::string, std::string> Files;
    char Separator = '.';
    std::function<int(int high, int low)> RandomInRange;
    std::string Log, Sounds, Queue;

    NaiveModel() {
        std::istringstream table(Definitions);
        Entry entry{};
        while (std::getline(table, entry.SystemName, ':')) {
            ++entry.System, entry.SubSystem = 0;
            while (table.peek() != '\n' && std::getline(table, entry.Name, ',')) {
                ++entry.SubSystem;
                for (auto* field : {&entry.Offset, &entry.FailValue, &entry.Size, &entry.Mode})
                    std::getline(table, *field, ',');
                std::getline(table, entry.Engine, ';');
                Catalogue.push_back(entry);
            }
            table.get();
        }
    }

    static int Int(const std::string& text) {
        int number = 0;
        for (char digit : text) number = 10 * number + (digit - '0');
        return number;
    }
    double Value(std::string text) const {
        std::replace(text.begin(), text.end(), Separator, '.');
        return std::strtod(text.c_str(), nullptr);
    }
    std::string TextOf(float value) const {
        std::ostringstream out;
        out.precision(7);
        out << value;
        std::string text = out.str();
        std::replace(text.begin(), text.end(), '.', Separator);
        return text;
    }

    // --- What the world gets ------------------------------------------------------------------
    int Peek(int offset, int size) const {
        unsigned value = 0;
        while (size-- > 0)
            value = value << 8 |
                    static_cast<unsigned char>(Space[static_cast<unsigned>(offset + size)]);
        return static_cast<int>(value);
    }
    bool Reached() const { return Linked && Simulator != Silent; }
    void Write(int offset, const std::string& bytes) {
        if (!Open) return;
        Queued = true;
        Queue += "w" + std::to_string(offset) + "=" + bytes;
        if (Reached() && Simulator != Refuses)
            Space.replace(static_cast<unsigned>(offset), bytes.size(), bytes);
    }
    void Write(int offset, int size, int value) {
        std::string bytes;
        for (; size-- > 0; value >>= 8) bytes += static_cast<char>(value);
        Write(offset, bytes);
    }
    bool Send() {
        std::string batch = "b" + (Simulator == Refuses ? "" : Queue);
        Queue.clear();
        if (!Open || !std::exchange(Queued, false)) return false;
        if (Reached()) Log += batch;
        return Reached() && Simulator == Good;
    }
    void Play(bool good) { Sounds += good ? "sound_ok.wav " : "sound_warning.wav "; }
    void RefreshSubsystems(bool skip) {
        if (!skip) ComputeFailureRanges();
        Log += "r";
    }
    bool Lock() const { return HardcoreActive && Airborne; }

    // --- Failures -----------------------------------------------------------------------------
    void AddFailure(Entry& entry) {
        entry.Failed = "YES";
        FailureList.push_back({&entry});
    }
    void WriteFailureValue(const Entry& entry, int state) {
        if (entry.Mode == "1") {
            Disconnected[entry.FailValue] = state;
            state = 0;
            for (auto& [text, bit] : Disconnected) state += bit;
        }
        if (entry.Mode == "3" && state == 1 && entry.Engine != "0")
            state = 1 << (Int(entry.Engine) - 1);
        Write(Int(entry.Offset), Int(entry.Size), state);
    }
    void MaintainFailures() {
        for (std::size_t i = FailureList.size(); i-- > 0;) {
            Entry& entry = *FailureList[i].Of;
            std::string& counter = FailureList[i].Counter;
            if (entry.Mode == "4") {
                Queued = true;
                if (!Send()) continue;
                int level = Peek(Int(entry.Offset), 4);
                if (!counter.empty())
                    WriteFailureValue(entry, level < Int(counter) ? 0 : level - Int(counter));
                else if (level > 0)
                    counter = std::to_string(RandomInRange(10000, 5000));
                else
                    ClearFailure(entry);
            } else if (counter.empty()) {
                WriteFailureValue(entry, Int(entry.FailValue));
                if (entry.Mode == "5") counter = "30";
            } else {
                counter = std::to_string(Int(counter) - 1);
                if (counter == "0") ClearFailure(entry);
            }
        }
        Send();
    }
    void ClearFailure(Entry& entry) {
        if (entry.Failed.empty()) return;
        Disconnected.erase(entry.Mode == "1" ? entry.FailValue : "");
        if (entry.Mode == "3") {
            WriteFailureValue(entry, 0);
            Send();
        }
        entry.Failed = "";
        std::erase_if(FailureList, [&entry](const Failure& row) { return row.Of == &entry; });
    }
    void ClearFailures(bool all, bool quiet) {
        if (Lock() || FailureList.empty()) return;
        do ClearFailure(*FailureList.back().Of);
        while (all && !FailureList.empty());
        RefreshSubsystems(!all);
        if (!quiet) Play(true);
    }

    // --- Chance -------------------------------------------------------------------------------
    void NewDraw(Entry& entry) {
        int steps = static_cast<int>(std::nearbyint(Value(entry.Hours) * 360));
        entry.DrawAt = std::to_string(RandomInRange(steps, 1));
    }
    void ComputeFailureRanges() {
        for (Entry& entry : Catalogue) {
            auto h = static_cast<float>((100 - Value(entry.Reliability)) / 100 * 100000 / 2);
            int low = static_cast<int>(std::floor(50000.5 - h)),
                high = static_cast<int>(std::floor(h + 50000.5));
            int shift =
                RandomInRange(2, 1) == 1 ? -RandomInRange(low, 0) : RandomInRange(100000 - high, 0);
            entry.RangeLow = std::to_string(low + shift),
            entry.RangeHigh = std::to_string(high + shift);
            NewDraw(entry);
        }
    }
    void Draw(Entry& entry) {
        if (Value(entry.Reliability) >= 100) return;
        bool retractable = entry.Offset == "3048" || entry.Offset == "3036";
        if (!retractable || Peek(Int(entry.Offset), 4) <= 0) {
            if (Int(entry.Engine) > EngineCount) return;
            entry.Elapsed = std::to_string(Int(entry.Elapsed) + 1);
            int r = entry.Elapsed == entry.DrawAt ? RandomInRange(100000, 0) : -1;
            if (Int(entry.RangeLow) <= r && r < Int(entry.RangeHigh) && entry.Failed.empty())
                AddFailure(entry);
            if (Int(entry.Elapsed) / 360.0 < Value(entry.Hours)) return;
        }
        NewDraw(entry);
        entry.Elapsed = "0";
    }

    // --- Connection, tick, status, hotkeys ----------------------------------------------------
    void ConnectToSimulator(bool quiet) {
        if (Connected) return;
        Open = Queued = Linked = Simulator != Gone;
        Connected = Open = Send();
        if (Connected || !quiet) Play(Connected);
        StatusText = "Connected";
        if (!Connected) SetDisconnected();
    }
    void SetDisconnected() {
        Connected = false;
        ClearFailures(true, true);
        StatusText = "FSUIPC - No connection to Flight Simulator.";
    }
    void Tick() {
        PollHotkeys();
        Queued = true;
        if (!Connected) {
            ConnectToSimulator(true);
        } else if (Send()) {
            ConnectedTick();
        } else {
            Play(false);
            SetDisconnected();
        }
        if (!Ended) ShowStatus(false);
    }
    void ConnectedTick() {
        EngineCount = Peek(2796, 2);
        SimPaused = Peek(612, 2) != 0;
        Airborne = Peek(870, 2) == 0;
        if (ListShown == Lock()) Log += (ListShown = !ListShown) ? "L" : "l";
        Ended = Lock() && !Companion;
        if (Ended) Log += "u";
        if (Ended) return;
        StatusText = "Operational.";
        if (SimPaused || !Airborne || Deactivated)
            StatusText = std::string("On hold ") + (SimPaused ? "(sim paused)" : "") +
                         (Airborne ? "" : "(not airborne)") + (Deactivated ? "(deactivated)" : "") +
                         ".";
        else if (++DrawDivider % 10 == 0)
            for (Entry& entry : Catalogue) Draw(entry);
        MaintainFailures();
        std::size_t count = FailureList.size(), before = std::exchange(LastFailureCount, count);
        if (count != before) RefreshSubsystems(true);
        if (count > before && PlayFailureSound) Sounds += "sound_failure.wav ";
        if (DisplayFailures && !HardcoreActive)
            StatusText += "  " + (count > 0 ? std::to_string(count) + " f" : "No f") + "ailures.";
    }
    void ShowStatus(bool force) {
        if (!force && DisplayFailures && !HardcoreActive && !FailureList.empty()) {
            StatusText += ".. ";
            for (auto row = FailureList.rbegin(); row != FailureList.rend(); ++row) {
                bool room = StatusText.size() < 70;
                std::string label = row->Of->SystemName + "(" + row->Of->Name + ")";
                StatusText += !room ? "..." : row == FailureList.rbegin() ? label : ", " + label;
                if (!room) break;
            }
        }
        if (!force && HardcoreActive) StatusText += " Hardcore Mode.";
        if (!force && StatusText == LastShownStatus) return;
        Log += "c" + StatusText;
        LastShownStatus = StatusText;
        if (!force && !DisplayUpdate) return;
        std::string message = ("QM:  " + StatusText).substr(0, 127);
        message.resize(128);
        Write(0x3380, message);
        Write(0x32FA, 2, 5);
        Send();
    }
    bool Held(int i) {
        auto matches = [this](int key, bool wanted) {
            return wanted ? Keys[key] < 0 : Keys[key] == 0;
        };
        int mods = HotkeyMods[i];
        bool down = Hotkey[i] != 0 && Keys[Hotkey[i]] < 0;
        KeysAskedFor += (Hotkey[i] != 0) + 2 * down;
        return down && matches(17, mods == 1 || mods == 3) && matches(16, mods == 2 || mods == 3);
    }
    void PollHotkeys() {
        if (Held(0)) ShowStatus(true);
        if (Held(1)) ClearFailures(false, false);
        if (Held(2) && !Lock()) Play(!(Deactivated = !Deactivated));
    }

    // --- Profiles -----------------------------------------------------------------------------
    void ShowProfileName() {
        Log += "hSub-systems (" + LastProfile.substr(LastProfile.rfind('/') + 1) + ")";
    }
    void WriteProfile() {
        bool good = LastProfile.find("/nowhere/") == LastProfile.npos;
        if (!good) Log += "mCould not write " + LastProfile;
        if (!good) return;
        std::ostringstream text;
        for (Entry& entry : Catalogue)
            text << entry.System << '#' << entry.SubSystem << '#' << entry.Reliability << '#'
                 << entry.Hours << "\r\n";
        Files[LastProfile] = text.str();
        ShowProfileName();
    }
    bool ApplyLine(std::string line) {
        double s = 0, n = 0, r = 0, h = 0;
        int read = 0;
        if (Separator == ',')
            for (char& c : line) c = c == ',' ? '.' : c == '.' ? '!' : c;
        if (std::sscanf(line.c_str(), "%lf #%lf #%lf #%lf %n", &s, &n, &r, &h, &read) != 4 ||
            line[static_cast<unsigned>(read)] != 0)
            return false;
        bool useR = r >= 0 && r <= 100, useH = h >= 0 && h <= 999;
        for (Entry& entry : Catalogue) {
            if (entry.System != s || entry.SubSystem != n) continue;
            if (useR) entry.Reliability = TextOf(static_cast<float>(r));
            if (useH) entry.Hours = TextOf(static_cast<float>(h));
        }
        return (!useR && !useH) || (s >= 1 && s <= 8 && n >= 1 && n <= 15);
    }
    void ReadProfile() {
        bool good = Files.contains(LastProfile);
        std::istringstream lines(good ? Files[LastProfile] : "");
        for (std::string line; good && std::getline(lines, line, '\r'); lines.get())
            good = ApplyLine(line);
        if (!good) Log += "mCould not read " + std::exchange(LastProfile, "");
        if (!good) return;
        ShowProfileName();
        RefreshSubsystems(false);
    }
};

}  // namespace quirkmeter::torture
