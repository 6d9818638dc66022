// The client side of the protocol with the simulator's interface module: requests queued in a block
// of shared memory, the whole batch handed over with one window message.
//
// There is one link per process, used from the user-interface thread only. To connect: SimClose,
// SimInit, SimOpen. Then any number of batches: SimRead and SimWrite calls, then one SimProcess.
//
// The block holds request records one behind the other and ends with 4 zero bytes; every field is
// 4 bytes, little-endian:
//   read:  {1, offset, size, destination reference} and `size` bytes for the answer
//   write: {2, offset, size} and `size` bytes of data
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/platform.h"

namespace quirkmeter {

struct SimLinkRecord {
    platform::WindowHandle Window = 0;  // the module's window
    std::uint32_t MessageId = 0;
    std::int32_t Atom = 0;  // names the block; the 16-bit atom widened with its sign
    platform::MappingHandle Mapping = 0;
    std::byte* View = nullptr;  // base of the block; set exactly while the link is open
    std::byte* Next = nullptr;  // where the next record goes; View when nothing is queued
};

inline SimLinkRecord SimLink;

/// The module's and the simulator's version, as the last SimOpen read them.
inline std::int32_t ModuleVersion = 0;
inline std::int32_t SimVersion = 0;

inline constexpr std::uint32_t BlockSize = 0x8000;
/// Records and terminator end here at the latest; the rest of the block is never written.
inline constexpr std::int32_t BlockUsed = 0x7F00;

enum SimResult : std::int32_t {
    SimOk = 0,
    SimAlreadyOpen = 1,
    SimNoWindow = 2,
    SimNoMessage = 3,
    SimNoAtom = 4,
    SimMappingExists = 5,
    SimNoView = 6,
    SimBadVersion = 7,  // the window found was of class UIPCMAIN
    SimWrongSimulator = 8,
    SimNotOpen = 9,
    SimNothingQueued = 10,
    SimTimeout = 11,
    SimSendFailed = 12,
    SimBadReply = 13,
    SimBadVersionFs98 = 14,  // the window found was of class FS98MAIN
    SimDoesNotFit = 15,
};

/// Forgets the link's fields without releasing anything.
void SimInit();

/// Finds the module, makes the block and checks the versions. `version` 0 accepts any simulator.
/// On failure nothing is held, except that a link already open (SimAlreadyOpen) stays as it was.
/// A successful open takes at least 100 ms.
bool SimOpen(std::int32_t version, std::int32_t& result);

/// Releases whatever is held; safe when closed.
void SimClose();

/// Queues a read of `size` bytes (0 or more) at a simulator offset. `destination` receives them
/// during the next SimProcess if that succeeds, and must stay valid until then; null skips the
/// answer. A request that does not fit leaves the queue as it was.
bool SimRead(std::int32_t offset, std::int32_t size, void* destination, std::int32_t& result);

/// Queues a write of `size` bytes (0 or more), copied from `source` at once.
bool SimWrite(std::int32_t offset, std::int32_t size, const void* source, std::int32_t& result);

/// Sends the batch, which is spent whatever happens, and copies the answers. Blocks while the
/// module works: up to 41 sends of 2000 ms each with 100 ms between them, but returns at once with
/// SimSendFailed when the window is gone. An answered block that cannot be right fails with `result`
/// as it was before the call.
bool SimProcess(std::int32_t& result);

}  // namespace quirkmeter
