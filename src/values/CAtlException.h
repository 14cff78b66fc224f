#pragma once

#include <cstdint>

namespace norvane {

/// A bare 32-bit status, raised by the enumeration of providers. It stands outside the family of
/// CAException on purpose, but like that it tells of what was asked for and not of the process.
class CAtlException {
  public:
    explicit CAtlException(std::uint32_t status) noexcept : status_(status) {}

    [[nodiscard]] std::uint32_t status() const noexcept { return status_; }

  private:
    std::uint32_t status_;
};

/// A last error as a status: a positive one becomes 0x8007xxxx with its low 16 bits, 0 and what is
/// a status already stay as they are.
[[nodiscard]] constexpr std::uint32_t status_from_error(std::uint32_t error) noexcept {
    constexpr std::uint32_t win32_facility = 0x80070000;
    constexpr std::uint32_t code_mask = 0x0000FFFF;
    return static_cast<std::int32_t>(error) > 0 ? win32_facility | (error & code_mask) : error;
}

} // namespace norvane
