// The last error of the calling thread, which GetLastError returns.
#pragma once

#include <cstdint>

namespace quirkmeter::platform {

// The numbers that only this layer gives out; the others are in platform.h.
inline constexpr std::uint32_t ErrorPathNotFound = 3;
inline constexpr std::uint32_t ErrorAccessDenied = 5;
inline constexpr std::uint32_t ErrorLockViolation = 33;
inline constexpr std::uint32_t ErrorInvalidParameter = 87;
inline constexpr std::uint32_t ErrorNameTooLong = 206;
inline constexpr std::uint32_t ErrorInvalidAddress = 487;

void SetLastError(std::uint32_t error);

}  // namespace quirkmeter::platform
