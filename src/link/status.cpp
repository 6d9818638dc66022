#include "link/status.h"

#include <array>
#include <charconv>

#include "link/sim_link.h"
#include "model/catalogue.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/main_window.h"

namespace quirkmeter {

namespace {

constexpr std::string_view MessagePrefix = "QM:  ";
constexpr std::size_t MessageSize = 128;
constexpr std::int16_t MessageSeconds = 5;
constexpr std::size_t ListLimit = 70;

void AppendLabel(std::string& line, const FailureRow& row) {
    line.append(SystemNames[row.System]).append("(");
    line.append(Catalogue[row.System][row.SubSystem].Name).append(")");
}

// True when the user wants to see failures and Hardcore Mode does not hide them.
bool TellsFailures() {
    return Settings.DisplayFailures && !Settings.HardcoreActive;
}

void DescribeHold(std::string& line) {
    line = "On hold ";
    if (EngineState.SimPaused) line += "(sim paused)";
    if (!EngineState.Airborne) line += "(not airborne)";
    if (EngineState.Deactivated) line += "(deactivated)";
    line += '.';
}

void AppendFailureCount(std::string& line) {
    if (FailureCount < 1) {
        line += "  No failures.";
        return;
    }
    char count[12];
    char* end = std::to_chars(count, count + sizeof count, FailureCount).ptr;
    line.append("  ").append(count, end).append(" failures.");
}

void AppendFailures(std::string& line) {
    line.append(".. ");
    for (int i = FailureCount; i >= 1; --i) {
        if (line.size() >= ListLimit) {
            line.append("...");
            return;
        }
        if (i != FailureCount) line.append(", ");
        AppendLabel(line, FailureList[i]);
    }
}

}  // namespace

void ShowSimMessage(std::string_view text) {
    std::array<char, MessageSize> message{};
    MessagePrefix.copy(message.data(), MessagePrefix.size());
    text.copy(message.data() + MessagePrefix.size(), MessageSize - 1 - MessagePrefix.size());

    std::int32_t result = 0;
    if (!SimWrite(0x3380, MessageSize, message.data(), result)) return;
    SimWrite(0x32FA, sizeof MessageSeconds, &MessageSeconds, result);
    SimProcess(result);
}

void DescribeConnection() {
    EngineState.StatusText =
        EngineState.Connected ? "Connected" : "FSUIPC - No connection to Flight Simulator.";
}

void DescribeFlight() {
    std::string& line = EngineState.StatusText;
    if (OnHold())
        DescribeHold(line);
    else
        line = "Operational.";
    if (TellsFailures()) AppendFailureCount(line);
}

void FinishStatus() {
    if (FailureCount >= 1 && TellsFailures()) AppendFailures(EngineState.StatusText);
    if (Settings.HardcoreActive) EngineState.StatusText.append(" Hardcore Mode.");
}

void ShowStatus(bool force) {
    std::string& line = EngineState.StatusText;
    if (!force && line == EngineState.LastShownStatus) return;
    TheMainWindow->SetStatusCaption(line);
    EngineState.LastShownStatus = line;
    if (force || Settings.DisplayUpdate) ShowSimMessage(line);
}

}  // namespace quirkmeter
