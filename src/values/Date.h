#pragma once

#include <compare>
#include <cstdint>

#include <norvane/wincrypt.h>

namespace norvane {

/// A count of 100-nanosecond ticks, as a date (since 1601-01-01 00:00:00 UTC, the value of a
/// FILETIME) or as a length of time. The halves stand high first, the reverse of a FILETIME.
/// Values compare by `high`, then by `low`, both unsigned.
struct CACMPT_Date {
    std::uint32_t high = 0;
    std::uint32_t low = 0;

    static const CACMPT_Date one_second;
    static const CACMPT_Date one_millisecond;
    static const CACMPT_Date one_microsecond;
    /// 1970-01-01 00:00:00 UTC.
    static const CACMPT_Date unix_epoch;

    [[nodiscard]] static constexpr CACMPT_Date from_ticks(std::uint64_t ticks) noexcept {
        return {static_cast<std::uint32_t>(ticks >> 32), static_cast<std::uint32_t>(ticks)};
    }
    [[nodiscard]] constexpr std::uint64_t ticks() const noexcept {
        return std::uint64_t{high} << 32 | low;
    }

    [[nodiscard]] friend constexpr bool operator==(const CACMPT_Date&,
                                                   const CACMPT_Date&) noexcept = default;
    [[nodiscard]] friend constexpr std::strong_ordering operator<=>(const CACMPT_Date& a,
                                                                    const CACMPT_Date& b) noexcept {
        return a.ticks() <=> b.ticks();
    }
};

inline constexpr CACMPT_Date CACMPT_Date::one_second{0, 10'000'000};
inline constexpr CACMPT_Date CACMPT_Date::one_millisecond{0, 10'000};
inline constexpr CACMPT_Date CACMPT_Date::one_microsecond{0, 10};
inline constexpr CACMPT_Date CACMPT_Date::unix_epoch{0x019DB1DE, 0xD53E8000};

/// The date of a FILETIME, truncated towards zero to whole microseconds.
[[nodiscard]] CACMPT_Date from_file_time(const FILETIME& time) noexcept;

/// The FILETIME with the same tick count.
[[nodiscard]] FILETIME to_file_time(const CACMPT_Date& date) noexcept;

/// The date of a calendar time in UTC, truncated to whole microseconds. A calendar time that does
/// not exist throws date_exception "ivalid time value".
[[nodiscard]] CACMPT_Date from_system_time(const SYSTEMTIME& time);

/// The length of time of so many milliseconds.
[[nodiscard]] CACMPT_Date from_milliseconds(std::uint32_t count) noexcept;

/// Whole seconds since 1970-01-01 00:00:00 UTC, truncated towards zero and wrapped to 32 bits.
/// The tick count 0x7FFFFFFFFFFFFFFF, and no other, throws CAException "time value is too big".
[[nodiscard]] std::uint32_t to_time_t(const CACMPT_Date& date);

/// Takes `other` off `date`. An `other` greater than `date` throws CAException "time value is too
/// small" and leaves `date` unchanged.
void subtract_from(CACMPT_Date& date, const CACMPT_Date& other);

/// Adds `other` to `date`. A sum of exactly 0x7FFFFFFFFFFFFFFF throws CAException "time value is
/// too big" and leaves `date` unchanged; one beyond it counts as negative, and stands.
void add_to(CACMPT_Date& date, const CACMPT_Date& other);

/// How many times `unit` goes into `date`, both signed, truncated towards zero. A quotient of
/// 0x7FFFFFFF or more, or a unit of zero, throws CAException "time value is too big".
[[nodiscard]] std::int64_t divide(const CACMPT_Date& date, const CACMPT_Date& unit);

/// `a` less `b`. A difference that is negative as a signed 64-bit number throws CAException "time
/// value is negative".
[[nodiscard]] CACMPT_Date difference(const CACMPT_Date& a, const CACMPT_Date& b);

} // namespace norvane
