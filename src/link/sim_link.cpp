#include "link/sim_link.h"

#include <array>
#include <cstdio>
#include <optional>

#include "model/engine_state.h"

namespace quirkmeter {

using namespace platform;

namespace {

constexpr char IpcName[] = "FSASMLIB:IPC";
constexpr std::int32_t LowestModuleVersion = 0x19980005;
constexpr std::uint32_t SimVersionMark = 0xFADE0000;

constexpr std::int32_t EndOfRequests = 0;
constexpr std::int32_t ReadRequest = 1;
constexpr std::int32_t WriteRequest = 2;

struct ReadHeader {
    std::int32_t Identifier, Offset, Size, Destination;
};
struct WriteHeader {
    std::int32_t Identifier, Offset, Size;
};
static_assert(sizeof(ReadHeader) == 16 && sizeof(WriteHeader) == 12);

// The destinations of the queued reads. The 4 bytes for it in a record may be too few for an
// address, so they hold the number of the entry here, from 1; 0 skips the answer.
struct PendingRead {
    void* Destination;
    std::int32_t Size;
};
std::array<PendingRead, BlockUsed / sizeof(ReadHeader)> PendingReads;
std::uint32_t PendingCount = 0;

bool Fail(std::int32_t& result, std::int32_t code) {
    result = code;
    return false;
}

bool FailClosed(std::int32_t& result, std::int32_t code) {
    SimClose();
    return Fail(result, code);
}

std::ptrdiff_t Queued() {
    return SimLink.Next - SimLink.View;
}

void EmptyQueue() {
    SimLink.Next = SimLink.View;
    PendingCount = 0;
}

template <typename Header>
bool Fits(std::int32_t size) {
    auto end = Queued() + std::int64_t{sizeof(Header)} + size + std::int64_t{sizeof EndOfRequests};
    return size >= 0 && end <= BlockUsed;
}

template <typename Record>
void Put(const Record& record) {
    RtlMoveMemory(SimLink.Next, &record, sizeof record);
    SimLink.Next += sizeof record;
}

// The process id makes the name unique. The longest name has 23 characters and a zero.
std::array<char, 24> BlockName() {
    std::array<char, 24> name{};
    std::snprintf(name.data(), name.size(), "%s:%X:1", IpcName, GetCurrentProcessId());
    return name;
}

bool ReadVersions(std::int32_t& result) {
    for (int attempt = 0; attempt < 5 && (ModuleVersion == 0 || SimVersion == 0); ++attempt) {
        if (!SimRead(0x3304, 4, &ModuleVersion, result) ||
            !SimRead(0x3308, 4, &SimVersion, result) || !SimProcess(result))
            return false;
        Sleep(100);
    }
    return true;
}

bool VersionsAreKnown() {
    return ModuleVersion >= LowestModuleVersion &&
           (static_cast<std::uint32_t>(SimVersion) & 0xFFFF0000u) == SimVersionMark;
}

bool Deliver(std::uintptr_t& reply) {
    // Send no more than the atom's 32 bits: the module may be a 32-bit program.
    auto wParam = static_cast<std::uint32_t>(SimLink.Atom);
    return SendMessageTimeoutA(SimLink.Window, SimLink.MessageId, wParam, 0, SendBlock, 2000,
                               &reply) != 0;
}

// Deviation from the protocol: a window that is gone is never retried. Its handle is not reused, or
// is another window's by then, and clearing many failures would freeze the program for a minute.
bool WindowIsGone() {
    return GetLastError() == ErrorInvalidWindowHandle;
}

// Send nothing once the program must end: a silent simulator would delay it. The price of a
// Hardcore flight is the exception.
bool ProgramIsEnding() {
    return TerminationRequested() && !HardcoreLock();
}

// The last retry counts as too late, even if it was delivered.
bool DeliverWithRetries(std::uintptr_t& reply) {
    constexpr int MaxRetries = 40;
    bool delivered = !ProgramIsEnding() && Deliver(reply);
    int retries = 0;
    for (; !delivered && !WindowIsGone() && !ProgramIsEnding() && retries < MaxRetries; ++retries) {
        Sleep(100);
        delivered = Deliver(reply);
    }
    return delivered && retries < MaxRetries;
}

// Reads the answered block from its start. The module is another process and may change the block at
// any time: copy each header before checking it against the block's end and the request.
class AnswerReader {
   public:
    bool Copy(void* destination, std::int32_t size) {
        if (!Has(size)) return false;
        RtlMoveMemory(destination, SimLink.View + at_, static_cast<std::size_t>(size));
        at_ += size;
        return true;
    }

    template <typename Header>
    bool Take(Header& header) {
        return Copy(&header, sizeof header);
    }

    bool Skip(std::int32_t size) {
        if (!Has(size)) return false;
        at_ += size;
        return true;
    }

    /// The identifier of the next record, which stays; nothing when the block ends before it.
    std::optional<std::int32_t> NextIdentifier() const {
        std::int32_t identifier = 0;
        if (!AnswerReader(*this).Take(identifier)) return std::nullopt;
        return identifier & 0xFFFF;
    }

   private:
    bool Has(std::int32_t size) const { return size >= 0 && size <= BlockUsed - at_; }

    std::int32_t at_ = 0;
};

bool TakeAnswer(AnswerReader& reader) {
    ReadHeader header;
    if (!reader.Take(header)) return false;
    if (header.Destination == 0) return reader.Skip(header.Size);
    auto reference = static_cast<std::uint32_t>(header.Destination);
    if (reference > PendingCount) return false;
    const PendingRead& pending = PendingReads[reference - 1];
    return header.Size <= pending.Size && reader.Copy(pending.Destination, header.Size);
}

bool SkipWrite(AnswerReader& reader) {
    WriteHeader header;
    return reader.Take(header) && reader.Skip(header.Size);
}

bool TakeAnswers() {
    AnswerReader reader;
    for (;;) {
        auto identifier = reader.NextIdentifier();
        if (identifier == EndOfRequests) return true;
        if (identifier == ReadRequest) {
            if (!TakeAnswer(reader)) return false;
        } else if (identifier == WriteRequest) {
            if (!SkipWrite(reader)) return false;
        } else {
            return false;
        }
    }
}

bool SendBatch(std::int32_t& result) {
    std::uintptr_t reply = 0;
    if (!DeliverWithRetries(reply))
        return Fail(result, GetLastError() == ErrorSuccess ? SimTimeout : SimSendFailed);
    if (reply != 1) return Fail(result, SimBadReply);
    if (!TakeAnswers()) return false;
    result = SimOk;
    return true;
}

}  // namespace

void SimInit() {
    SimLink = {};
    PendingCount = 0;
}

bool SimOpen(std::int32_t version, std::int32_t& result) {
    ModuleVersion = 0;
    SimVersion = 0;
    if (SimLink.View) return Fail(result, SimAlreadyOpen);

    std::int32_t badVersion = SimBadVersion;
    SimLink.Window = FindWindowExA(0, 0, "UIPCMAIN", nullptr);
    if (SimLink.Window == 0) {
        SimLink.Window = FindWindowExA(0, 0, "FS98MAIN", nullptr);
        badVersion = SimBadVersionFs98;
    }
    if (SimLink.Window == 0) return Fail(result, SimNoWindow);

    SimLink.MessageId = RegisterWindowMessageA(IpcName);
    if (SimLink.MessageId == 0) return Fail(result, SimNoMessage);

    auto name = BlockName();
    SimLink.Atom = static_cast<std::int16_t>(GlobalAddAtomA(name.data()));
    if (SimLink.Atom == 0) return FailClosed(result, SimNoAtom);

    SimLink.Mapping =
        CreateFileMappingA(InvalidFileHandle, nullptr, PageReadWrite, 0, BlockSize, name.data());
    if (GetLastError() == ErrorAlreadyExists) return FailClosed(result, SimMappingExists);

    SimLink.View = static_cast<std::byte*>(MapViewOfFile(SimLink.Mapping, FileMapWrite, 0, 0, 0));
    if (!SimLink.View) return FailClosed(result, SimNoView);
    EmptyQueue();

    if (!ReadVersions(result)) {
        SimClose();
        return false;
    }
    if (!VersionsAreKnown()) return FailClosed(result, badVersion);
    SimVersion &= 0xFFFF;
    if (version != 0 && version != SimVersion) return FailClosed(result, SimWrongSimulator);
    result = SimOk;
    return true;
}

void SimClose() {
    SimLink.Window = 0;
    SimLink.MessageId = 0;
    SimLink.Next = nullptr;
    PendingCount = 0;
    if (SimLink.Atom != 0) {
        GlobalDeleteAtom(static_cast<std::uint16_t>(SimLink.Atom));
        SimLink.Atom = 0;
    }
    if (SimLink.View) {
        UnmapViewOfFile(SimLink.View);
        SimLink.View = nullptr;
    }
    if (SimLink.Mapping != 0) {
        CloseHandle(SimLink.Mapping);
        SimLink.Mapping = 0;
    }
}

bool SimRead(std::int32_t offset, std::int32_t size, void* destination, std::int32_t& result) {
    if (!SimLink.View) return Fail(result, SimNotOpen);
    if (!Fits<ReadHeader>(size)) return Fail(result, SimDoesNotFit);
    std::int32_t reference = 0;
    if (destination) {
        PendingReads[PendingCount] = {destination, size};
        reference = static_cast<std::int32_t>(++PendingCount);
    }
    Put(ReadHeader{ReadRequest, offset, size, reference});
    RtlZeroMemory(SimLink.Next, static_cast<std::size_t>(size));
    SimLink.Next += size;
    result = SimOk;
    return true;
}

bool SimWrite(std::int32_t offset, std::int32_t size, const void* source, std::int32_t& result) {
    if (!SimLink.View) return Fail(result, SimNotOpen);
    if (!Fits<WriteHeader>(size)) return Fail(result, SimDoesNotFit);
    Put(WriteHeader{WriteRequest, offset, size});
    if (size != 0) RtlMoveMemory(SimLink.Next, source, static_cast<std::size_t>(size));
    SimLink.Next += size;
    result = SimOk;
    return true;
}

bool SimProcess(std::int32_t& result) {
    if (!SimLink.View) return Fail(result, SimNotOpen);
    if (SimLink.Next == SimLink.View) return Fail(result, SimNothingQueued);
    Put(EndOfRequests);
    bool processed = SendBatch(result);
    EmptyQueue();  // spent, also after a failure
    return processed;
}

}  // namespace quirkmeter
