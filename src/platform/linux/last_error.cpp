#include "platform/linux/last_error.h"

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {
thread_local std::uint32_t lastError = ErrorSuccess;
}

void SetLastError(std::uint32_t error) {
    lastError = error;
}

std::uint32_t GetLastError() {
    return lastError;
}

}  // namespace quirkmeter::platform
