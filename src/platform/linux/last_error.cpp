#include "platform/linux/last_error.h"

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

thread_local std::uint32_t LastError = ErrorSuccess;
}

void SetLastError(std::uint32_t error) {
    LastError = error;
}

std::uint32_t GetLastError() {
    return LastError;
}

}  // namespace quirkmeter::platform
