// The targets of libFuzzer, one for each kind of input from outside.
#include <fuzzer/FuzzedDataProvider.h>

#include "persist/profile.h"
#include "persist/settings_file.h"
#include "program_test.h"
#include "torture/flight.h"

namespace quirkmeter {

namespace {

using Bytes = std::string_view;

void Check(bool holds) {
    if (!holds) std::abort();
}

std::string Folder() {
    return std::filesystem::temp_directory_path().string();
}

void WriteFile(const std::string& path, Bytes bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// Resets the program to the state before its start-up. The first byte chooses the decimal
// separator.
void Begin(Bytes& bytes) {
    static RecordingWindow window;
    window.Messages.clear();
    if (TheMainWindow == nullptr) {
        BuildCatalogue();
        TheMainWindow = &window;
        inprocess::SetProgramFolder(Folder());
        platform::OwnWindow("ThunderRT6FormDC", "FSQMHC", nullptr);
    }
    inprocess::SetDecimalSeparator(bytes.starts_with(',') ? ',' : '.');
    if (!bytes.empty()) bytes.remove_prefix(1);
    ScriptedDraw = [](std::int32_t, std::int32_t low) { return low; };
}

// Settings stay the same when they are written and read again, except for an invalid hotkey.
[[maybe_unused]] void SettingsFile(Bytes bytes) {
    Begin(bytes);
    Settings = {};
    WriteFile(Folder() + "/Quirkmeter.ini", bytes);
    Check(ReadSettings());
    SettingsRecord read = Settings;
    for (Hotkey* hotkey : {&read.StatusHotkey, &read.ClearHotkey, &read.ActiveHotkey})
        if (hotkey->Key <= 0) *hotkey = {};
    WriteSettings();
    Settings = {};
    Check(ReadSettings() && Settings == read);
}

std::string CatalogueTexts() {
    std::string texts;
    ForEachSubsystem([&texts](int, int, SubsystemEntry& entry) {
        texts += entry.Reliability.Text() + "#" + entry.Hours.Text() + "#";
        Check(entry.Reliability.ValueOr(-1) >= 0 && entry.Reliability.ValueOr(-1) <= 100);
        Check(entry.Hours.ValueOr(-1) >= 0 && entry.Hours.ValueOr(-1) <= 999);
    });
    return texts;
}

[[maybe_unused]] void ProfileFile(Bytes bytes) {
    Begin(bytes);
    static std::vector built(&Catalogue[0][0], &Catalogue[SystemSlots][SubsystemSlots] + 1);
    std::ranges::copy(built, &Catalogue[0][0]);
    WriteFile(Folder() + "/read.qmp", bytes);
    ApplyProfile(Folder() + "/read.qmp");
    std::string read = CatalogueTexts();
    Settings.LastProfile = Folder() + "/written.qmp";
    WriteProfile();
    Check(!ApplyProfile(Settings.LastProfile) && CatalogueTexts() == read);
}

[[maybe_unused]] void NumberTexts(Bytes bytes) {
    Begin(bytes);
    float value = 0;
    if (auto number = ReadNumber(bytes))
        value = static_cast<float>(*number);
    else
        bytes.copy(reinterpret_cast<char*>(&value), sizeof value);
    if (!std::isfinite(value)) return;
    std::string text = NumberText(value);
    auto again = ReadNumber(text);
    Check(again && NumberText(static_cast<float>(*again)) == text);
}

// The link writes only the requested bytes, whatever the module answers, and the next batch is a
// normal one.
[[maybe_unused]] void AnsweredBlock(Bytes bytes) {
    Begin(bytes);
    static TestSimulator simulator;
    std::int32_t result = 0;
    simulator.Spoil = nullptr;
    Check(SimLink.View || SimOpen(0, result));
    std::array<std::uint64_t, 7> answers{};
    for (int i : {1, 3, 5}) SimRead(0x0560, i, &answers[static_cast<unsigned>(i)], result);
    SimWrite(0x0560, 4, answers.data(), result);
    simulator.Spoil = [bytes](std::byte* block) {
        std::memcpy(block, bytes.data(), std::min<std::size_t>(bytes.size(), BlockSize));
    };
    SimProcess(result);
    for (unsigned i = 0; i < answers.size(); ++i) Check(answers[i] >> (i % 2 * i * 8) == 0);
    Check(SimLink.Next == SimLink.View);
}

[[maybe_unused]] void RequestBlock(Bytes bytes) {
    static practice::OffsetSpace space;
    std::vector<char> block(bytes.begin(), bytes.end());  // nothing beyond these may change
    auto* data = reinterpret_cast<std::byte*>(block.data());
    practice::CarryOut(data, block.size(), space, [](const practice::AppliedWrite& write) {
        Check(write.Offset + write.Bytes.size() <= practice::OffsetSpace::Size);
    });
}

[[maybe_unused]] void Actions(Bytes bytes) {
    FuzzedDataProvider choices(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    torture::Choose = [&choices](int n) { return choices.ConsumeIntegralInRange(0, n - 1); };
    torture::Flight flight;
    while (choices.remaining_bytes() > 0 && flight.Broken.empty()) flight.Step();
    if (!flight.Broken.empty()) std::fprintf(stderr, "%s\n", flight.Broken.c_str());
    Check(flight.Broken.empty());
}

}  // namespace

}  // namespace quirkmeter

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quirkmeter::TARGET({reinterpret_cast<const char*>(data), size});
    return 0;
}
