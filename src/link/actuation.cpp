#include "link/actuation.h"

#include <algorithm>
#include <optional>

#include "link/sim_link.h"
#include "link/sounds.h"
#include "model/engine_state.h"
#include "model/failure_list.h"
#include "model/failure_range.h"
#include "model/main_window.h"
#include "model/random.h"

namespace quirkmeter {

namespace {

std::int32_t Write(std::int32_t offset, std::int32_t size, const void* source) {
    std::int32_t result = 0;
    SimWrite(offset, size, source, result);
    return result;
}

void Send() {
    std::int32_t result = 0;
    SimProcess(result);
}

std::uint8_t DisconnectByte() {
    std::uint8_t byte = 0;
    for (unsigned i = 0; i < 4; ++i)
        if (DisconnectFlags[i]) byte = static_cast<std::uint8_t>(byte | 1u << i);
    return byte;
}

// The flag that belongs to a bit, null for any other value.
bool* DisconnectFlag(std::int32_t bit) {
    for (unsigned i = 0; i < 4; ++i)
        if (bit == static_cast<std::int32_t>(1u << i)) return &DisconnectFlags[i];
    return nullptr;
}

std::int32_t WriteState(const SubsystemEntry& entry, std::int32_t state) {
    return WriteFailureValue(entry.Offset, state, entry.Size, entry.Mode, entry.Engine);
}

void MaintainStall(FailureRow& row, const SubsystemEntry& entry) {
    if (!row.Started()) {
        if (WriteState(entry, entry.FailValue) == SimOk) row.Counter = StallTicks;
        return;
    }
    if (--row.Counter == 0) ClearFailure(row.System, row.SubSystem);
}

// The level of the tank; nothing when the simulator did not answer.
std::optional<std::int32_t> ReadLevel(const SubsystemEntry& entry) {
    std::int32_t level = 0;
    std::int32_t result = 0;
    if (!SimRead(entry.Offset, entry.Size, &level, result) || !SimProcess(result))
        return std::nullopt;
    return level;
}

void MaintainLeak(FailureRow& row, const SubsystemEntry& entry) {
    std::optional<std::int32_t> level = ReadLevel(entry);
    if (!level) return;
    if (row.Started())
        WriteState(entry, *level < row.Counter ? 0 : *level - row.Counter);
    else if (*level > 0)
        row.Counter = RandomInRange(10000, 5000);
    else
        ClearFailure(row.System, row.SubSystem);
}

void MaintainRow(FailureRow& row) {
    const SubsystemEntry& entry = Catalogue[row.System][row.SubSystem];
    switch (entry.Mode) {
        case FailureMode::Stall:
            return MaintainStall(row, entry);
        case FailureMode::Leak:
            return MaintainLeak(row, entry);
        default:
            WriteState(entry, entry.FailValue);
    }
}

void UndoFailure(const SubsystemEntry& entry) {
    if (entry.Mode == FailureMode::Disconnect) {
        if (bool* flag = DisconnectFlag(entry.FailValue)) *flag = false;
    } else if (entry.Mode == FailureMode::Flag) {
        if (WriteState(entry, 0) == SimOk) Send();
    }
}

}  // namespace

std::int32_t WriteFailureValue(std::int32_t offset, std::int32_t state, std::int32_t size,
                               FailureMode mode, std::int32_t engine) {
    if (mode == FailureMode::Disconnect) {
        if (bool* flag = DisconnectFlag(state)) *flag = true;
        std::uint8_t byte = DisconnectByte();
        return Write(offset, size, &byte);
    }
    if (mode == FailureMode::Flag && size == 1) {
        bool engineBit = state == 1 && engine >= 1 && engine <= 4;
        auto byte = static_cast<std::uint8_t>(engineBit ? 1 << (engine - 1) : state);
        return Write(offset, size, &byte);
    }
    return Write(offset, size, &state);
}

void MaintainFailures() {
    if (FailureCount < 1) return;
    // Newest first: removing a row then moves only rows that are done.
    for (int i = FailureCount; i >= 1; --i) MaintainRow(FailureList[i]);
    Send();
}

void ClearFailure(int system, int subsystem) {
    int row = FindFailure(system, subsystem);
    if (row == 0) return;
    UndoFailure(Catalogue[system][subsystem]);
    RemoveFailureRow(row);
}

void ClearAllFailures(bool quiet) {
    if (HardcoreLock()) return;
    if (FailureCount < 1) return;
    for (int i = FailureCount; i >= 1; --i)
        ClearFailure(FailureList[i].System, FailureList[i].SubSystem);
    ComputeFailureRanges();
    TheMainWindow->RefreshSubsystems();
    if (!quiet) PlaySoundFile(SoundOk);
}

void ClearLastFailure() {
    if (HardcoreLock()) return;
    if (FailureCount < 1) return;
    ClearFailure(FailureList[FailureCount].System, FailureList[FailureCount].SubSystem);
    TheMainWindow->RefreshSubsystems();
    PlaySoundFile(SoundOk);
}

void ZeroAircraftPosition() {
    auto setSlew = [](std::int16_t on) {
        Write(0x05DC, 2, &on);
        Send();
    };
    setSlew(1);
    std::int32_t zero = 0;
    for (std::int32_t offset = 0x0560; offset <= 0x0574; offset += 4) Write(offset, 4, &zero);
    Send();
    setSlew(0);
}

}  // namespace quirkmeter
