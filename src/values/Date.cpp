#include "values/Date.h"

#include <limits>

#include "values/Exceptions.h"

namespace norvane {
namespace {

constexpr std::int64_t latest_time = std::numeric_limits<std::int64_t>::max();
// What a platform call takes as a time-out stays below this.
constexpr std::int64_t quotient_limit = 0x7FFFFFFF;

// Sums and differences are made of unsigned tick counts, where they wrap, and then read as
// signed.
constexpr std::int64_t signed_ticks(std::uint64_t ticks) {
    return static_cast<std::int64_t>(ticks);
}

constexpr std::int64_t signed_ticks(const CACMPT_Date& date) { return signed_ticks(date.ticks()); }

} // namespace

CACMPT_Date from_file_time(const FILETIME& time) noexcept {
    const std::int64_t unit = signed_ticks(CACMPT_Date::one_microsecond);
    const std::int64_t ticks = signed_ticks(CACMPT_Date{time.dwHighDateTime, time.dwLowDateTime});
    return CACMPT_Date::from_ticks(static_cast<std::uint64_t>(ticks / unit * unit));
}

FILETIME to_file_time(const CACMPT_Date& date) noexcept {
    FILETIME time{};
    time.dwLowDateTime = date.low;
    time.dwHighDateTime = date.high;
    return time;
}

CACMPT_Date from_system_time(const SYSTEMTIME& time) {
    FILETIME file_time{};
    if (!SystemTimeToFileTime(&time, &file_time)) {
        throw date_exception("ivalid time value", source_module::date, __LINE__);
    }
    return from_file_time(file_time);
}

CACMPT_Date from_milliseconds(std::uint32_t count) noexcept {
    return CACMPT_Date::from_ticks(CACMPT_Date::one_millisecond.ticks() * count);
}

std::uint32_t to_time_t(const CACMPT_Date& date) {
    if (signed_ticks(date) == latest_time) {
        throw CAException("time value is too big", source_module::date, __LINE__);
    }
    const std::int64_t since_epoch = signed_ticks(date.ticks() - CACMPT_Date::unix_epoch.ticks());
    return static_cast<std::uint32_t>(since_epoch / signed_ticks(CACMPT_Date::one_second));
}

void subtract_from(CACMPT_Date& date, const CACMPT_Date& other) {
    if (date < other) {
        throw CAException("time value is too small", source_module::date, __LINE__);
    }
    date = CACMPT_Date::from_ticks(date.ticks() - other.ticks());
}

void add_to(CACMPT_Date& date, const CACMPT_Date& other) {
    const std::uint64_t sum = date.ticks() + other.ticks();
    if (signed_ticks(sum) >= latest_time) {
        throw CAException("time value is too big", source_module::date, __LINE__);
    }
    date = CACMPT_Date::from_ticks(sum);
}

std::int64_t divide(const CACMPT_Date& date, const CACMPT_Date& unit) {
    const std::int64_t dividend = signed_ticks(date);
    const std::int64_t divisor = signed_ticks(unit);
    // The one quotient that 64 bits do not hold is beyond the limit in any case.
    const bool divisible =
        divisor != 0 && !(dividend == std::numeric_limits<std::int64_t>::min() && divisor == -1);
    if (!divisible || dividend / divisor >= quotient_limit) {
        throw CAException("time value is too big", source_module::date, __LINE__);
    }
    return dividend / divisor;
}

CACMPT_Date difference(const CACMPT_Date& a, const CACMPT_Date& b) {
    const std::uint64_t result = a.ticks() - b.ticks();
    if (signed_ticks(result) < 0) {
        throw CAException("time value is negative", source_module::date, __LINE__);
    }
    return CACMPT_Date::from_ticks(result);
}

} // namespace norvane
