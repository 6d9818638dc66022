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

namespace quirkmeter {

namespace inprocess = platform::inprocess;
using testing::ElementsAre;
using testing::IsEmpty;

/// The messages that the rooms below asked the main window to show.
struct RecordingWindow final : MainWindow {
    void RefreshSubsystems() override {}
    void SetStatusCaption(const std::string&) override {}
    void SetSubSystemsHeading(const std::string&) override {}
    void ShowSubsystemList(bool) override {}
    platform::WindowHandle Handle() const override { return 0; }
    void Unload() override {}
    void ShowMessage(const std::string& text, MessageIcon icon) override {
        Messages.push_back((icon == MessageIcon::Warning ? "! " : "") + text);
    }

    std::vector<std::string> Messages;
};

struct SimWriteRecord {
    std::uint32_t Offset;
    std::uint32_t Size;
    std::uint64_t Value;  // of at most 8 bytes
    bool operator==(const SimWriteRecord&) const = default;
};

/// The simulator's end of the wire.
class TestSimulator {
   public:
    explicit TestSimulator(const char* className = "UIPCMAIN") {
        Space.SetValue(0x3304, 4, 0x19980005);
        Space.SetValue(0x3308, 4, 0xFADE0007);
        Space.SetValue(0x0AEC, 2, 4);
        message_ = platform::RegisterWindowMessageA("FSASMLIB:IPC");
        window_ = platform::OwnWindow(
            className, "", [this](std::uint32_t message, std::uintptr_t wParam, std::intptr_t) {
                return message == message_ ? Answer(wParam) : 0;
            });
    }
    ~TestSimulator() { platform::DropWindow(window_); }
    TestSimulator(const TestSimulator&) = delete;

    practice::OffsetSpace Space;
    std::vector<SimWriteRecord> Writes;
    std::vector<std::byte> Block;  // as it arrived last
    int Batches = 0;
    std::intptr_t Reply = 1;
    /// What a faulty module does to the answered block.
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
            auto size = static_cast<std::uint32_t>(write.Bytes.size());
            Writes.push_back({write.Offset, size, Space.Value(write.Offset, std::min(size, 8u))});
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

/// A test with the link open.
class LinkedTest : public ProgramTest {
   protected:
    LinkedTest() {
        std::int32_t result = 0;
        EXPECT_TRUE(SimOpen(0, result));
        EngineState.Connected = true;
        simulator_.Batches = 0;
    }

    TestSimulator simulator_;
};

}  // namespace quirkmeter
