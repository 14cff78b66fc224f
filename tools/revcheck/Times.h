#pragma once

#include <norvane/wincrypt.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvane {

/// The moment in UTC after ISO 8601, in whole seconds: "2026-01-31T09:30:00Z".
[[nodiscard]] std::string time_text(const FILETIME& time);

/// Nothing for the zero that stands for an absent time.
[[nodiscard]] bool is_set(const FILETIME& time) noexcept;

/// Reads a date-time of RFC 3339 5.6; a date alone, which means its beginning in UTC; or seconds
/// since 1970 behind "@". Fractions of a second are dropped. Nothing if the text is none of these,
/// or a moment before 1601.
[[nodiscard]] std::optional<FILETIME> parse_time(std::string_view text);

/// The present moment.
[[nodiscard]] FILETIME now();

/// A length of time in the two largest units that say something: "3 days 4 hours".
[[nodiscard]] std::string duration_text(std::uint32_t seconds);

} // namespace norvane
