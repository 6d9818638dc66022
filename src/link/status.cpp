#include "link/status.h"

#include <array>

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

void ShowStatus(bool force) {
    std::string& line = EngineState.StatusText;
    if (!force) {
        if (FailureCount >= 1 && Settings.DisplayFailures && !Settings.HardcoreActive)
            AppendFailures(line);
        if (Settings.HardcoreActive) line.append(" Hardcore Mode.");
        if (line == EngineState.LastShownStatus) return;
    }
    TheMainWindow->SetStatusCaption(line);
    EngineState.LastShownStatus = line;
    if (force || Settings.DisplayUpdate) ShowSimMessage(line);
}

}  // namespace quirkmeter
