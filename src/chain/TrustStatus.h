#pragma once

#include <cstdint>

namespace norvane {

// What can be wrong with a certification path, one bit each, with the platform's values.

inline constexpr std::uint32_t IS_NOT_TIME_VALID = 0x00000001;
inline constexpr std::uint32_t IS_REVOKED = 0x00000004;
inline constexpr std::uint32_t IS_NOT_SIGNATURE_VALID = 0x00000008;
inline constexpr std::uint32_t IS_NOT_VALID_FOR_USAGE = 0x00000010;
inline constexpr std::uint32_t IS_UNTRUSTED_ROOT = 0x00000020;
inline constexpr std::uint32_t REVOCATION_STATUS_UNKNOWN = 0x00000040;
inline constexpr std::uint32_t INVALID_BASIC_CONSTRAINTS = 0x00000400;
inline constexpr std::uint32_t IS_PARTIAL_CHAIN = 0x00010000;

/// Which of two failures is the less bad one: 1 if it is `new_status`, -1 if it is `old_status`, 0
/// if neither, so that the earlier record stays. Any failure is 1 against an `old_status` of 0.
[[nodiscard]] int compare_status(std::uint32_t new_status, std::uint32_t old_status);

} // namespace norvane
