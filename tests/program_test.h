// The program below its user interface, on the in-process platform, against an interface module
// that carries out requests with the practice simulator's reading of the protocol.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "engine/program_state.h"
#include "link/sim_link.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/main_window.h"
#include "platform/inprocess/inprocess.h"
#include "platform/platform.h"
#include "practice/offset_space.h"
#include "practice/request_block.h"
#include "practice/variables.h"
#include "practice/write_line.h"

namespace quirkmeter {

namespace inprocess = platform::inprocess;
using testing::ElementsAre;
using testing::IsEmpty;

/// A main window that records the calls of the rooms below.
struct RecordingWindow final : MainWindow {
    void RefreshSubsystems() override { ++Refreshes; }
    void SetStatusCaption(const std::string& caption) override { Captions.push_back(caption); }
    void SetSubSystemsHeading(const std::string& heading) override { Heading = heading; }
    void ShowSubsystemList(bool show) override { ListShown = show; }
    platform::WindowHandle Handle() const override { return 0; }
    void Unload() override { ++Unloads; }
    void ShowMessage(const std::string& text, MessageIcon icon) override {
        Messages.push_back((icon == MessageIcon::Warning ? "! " : "") + text);
    }

    std::vector<std::string> Captions, Messages;
    std::string Heading;
    int Refreshes = 0, Unloads = 0;
    bool ListShown = true;
};

/// The simulator and its interface module.
class TestSimulator {
   public:
    explicit TestSimulator(const char* className = "UIPCMAIN") {
        Space.SetValue(0x3304, 4, 0x19980005);
        Space.SetValue(0x3308, 4, 0xFADE0007);
        Space.SetValue(0x0AEC, 2, 4);
        for (const practice::Variable& tank : practice::VariablesOf(practice::VariableKind::Tank))
            Space.SetValue(tank.Offset, tank.Size, practice::FullTank);
        message_ = platform::RegisterWindowMessageA("FSASMLIB:IPC");
        window_ = platform::OwnWindow(
            className, "", [this](std::uint32_t message, std::uintptr_t wParam, std::intptr_t) {
                return message == message_ ? Answer(wParam) : 0;
            });
    }
    ~TestSimulator() { platform::DropWindow(window_); }
    TestSimulator(const TestSimulator&) = delete;

    practice::OffsetSpace Space;
    /// The lines that the practice simulator prints for the writes, without the time.
    std::vector<std::string> Writes;
    std::vector<std::string> TakeWrites() { return std::exchange(Writes, {}); }
    std::vector<std::byte> Block;  // the last one that arrived
    int Batches = 0;
    std::intptr_t Reply = 1;
    /// Changes the answered block, as a faulty module might.
    std::function<void(std::byte* block)> Spoil;

   private:
    std::intptr_t Answer(std::uintptr_t wParam) {
        ++Batches;
        char name[256];
        platform::GlobalGetAtomNameA(static_cast<std::uint16_t>(wParam), name, sizeof name);
        auto mapping = platform::OpenFileMappingA(platform::FileMapWrite, false, name);
        auto* block = static_cast<std::byte*>(
            platform::MapViewOfFile(mapping, platform::FileMapWrite, 0, 0, 0));
        Block.assign(block, block + platform::ViewSize(block));
        practice::CarryOut(block, Block.size(), Space, [this](const practice::AppliedWrite& write) {
            Writes.push_back(practice::WriteLine(0, write).substr(sizeof "0.000"));
        });
        if (Spoil) Spoil(block);
        platform::UnmapViewOfFile(block);
        platform::CloseHandle(mapping);
        return Reply;
    }

    std::uint32_t message_;
    platform::WindowHandle window_;
};

class ProgramTest : public testing::Test {
   protected:
    ProgramTest() {
        inprocess::Reset();
        ResetProgramState();
        TheMainWindow = &window_;
        folder_ = std::filesystem::temp_directory_path() /
                  ("quirkmeter-test-" + std::to_string(std::random_device{}()));
        std::filesystem::create_directory(folder_);
        inprocess::SetProgramFolder(folder_.string());
        for (const char* sound : {"sound_ok.wav", "sound_warning.wav", "sound_failure.wav"})
            WriteFile(sound, "RIFF");
        BuildCatalogue();
    }
    ~ProgramTest() override {
        ResetProgramState();
        TheMainWindow = nullptr;
        std::filesystem::remove_all(folder_);
    }

    void WriteFile(const std::string& name, std::string_view content) {
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    std::string ReadFile(const std::string& name) {
        std::ostringstream content;
        content << std::ifstream(folder_ / name, std::ios::binary).rdbuf();
        return content.str();
    }

    std::filesystem::path folder_;
    RecordingWindow window_;
};

/// A test with an open link, four engines, full tanks, and the aircraft in the air with gear and
/// flaps up.
class LinkedTest : public ProgramTest {
   protected:
    LinkedTest() {
        std::int32_t result = 0;
        EXPECT_TRUE(SimOpen(0, result));
        EngineState.Connected = true;
        simulator_.Batches = 0;
        inprocess::TakeSounds();
    }

    TestSimulator simulator_;
};

/// Returns the catalogue's numbers of a sub-system from its label in the status line, as
/// "Inst(Vacuum)".
inline std::pair<int, int> Place(std::string_view label) {
    std::pair<int, int> place;
    ForEachSubsystem([&](int s, int n, const SubsystemEntry& entry) {
        std::string name(SystemNames[s]);
        if (name + "(" + std::string(entry.Name) + ")" == label) place = {s, n};
    });
    EXPECT_NE(place.first, 0) << "no sub-system " << label;
    return place;
}
inline SubsystemEntry& Entry(std::string_view label) {
    auto [s, n] = Place(label);
    return Catalogue[s][n];
}
inline void Fail(std::string_view label) {
    auto [s, n] = Place(label);
    AddFailure(s, n);
}
/// The labels of the failures in force, oldest first.
inline std::vector<std::string> Failures() {
    std::vector<std::string> labels;
    for (int row = 1; row <= FailureCount; ++row) {
        auto [s, n, counter] = FailureList[row];
        labels.push_back(std::string(SystemNames[s]) + "(" + std::string(Catalogue[s][n].Name) +
                         ")");
    }
    return labels;
}

}  // namespace quirkmeter
