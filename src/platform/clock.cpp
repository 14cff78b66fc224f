#include "platform/failure.h"

#include <chrono>
#include <ctime>
#include <limits>
#include <optional>

namespace {

using std::chrono::days;
using std::chrono::sys_days;

/// 100 nanoseconds. The count has 64 bits and a sign, so valid FILETIME values are those below
/// 2^63.
using Ticks = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>;

constexpr sys_days file_time_epoch = std::chrono::year{1601} / std::chrono::January / 1;
constexpr WORD first_year = 1601;
constexpr WORD last_year = 30827;

/// The value, or nothing if it is 2^63 or above.
std::optional<Ticks> ticks_of(const FILETIME& time) noexcept {
    const ULONGLONG value = ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    if (value > ULONGLONG{std::numeric_limits<LONGLONG>::max()}) {
        return std::nullopt;
    }
    return Ticks{static_cast<LONGLONG>(value)};
}

FILETIME file_time_of(Ticks time) noexcept {
    const auto value = static_cast<ULONGLONG>(time.count());
    return {.dwLowDateTime = static_cast<DWORD>(value),
            .dwHighDateTime = static_cast<DWORD>(value >> 32)};
}

SYSTEMTIME system_time_of(Ticks since_epoch) noexcept {
    const days whole_days = std::chrono::floor<days>(since_epoch);
    const sys_days day = file_time_epoch + whole_days;
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss time{
        std::chrono::floor<std::chrono::milliseconds>(since_epoch - whole_days)};
    const auto word = [](auto number) { return static_cast<WORD>(number); };
    return {.wYear = word(static_cast<int>(date.year())),
            .wMonth = word(static_cast<unsigned>(date.month())),
            .wDayOfWeek = word(std::chrono::weekday{day}.c_encoding()),
            .wDay = word(static_cast<unsigned>(date.day())),
            .wHour = word(time.hours().count()),
            .wMinute = word(time.minutes().count()),
            .wSecond = word(time.seconds().count()),
            .wMilliseconds = word(time.subseconds().count())};
}

/// The offset of local time from UTC that is in force at this moment.
Ticks zone_offset_now() noexcept {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    tzset(); // localtime_r alone need not notice that the zone was changed
    localtime_r(&now, &local);
    return std::chrono::seconds{local.tm_gmtoff};
}

struct ShownClock {
    PFN_NORVANE_CLOCK function = nullptr;
    void* context = nullptr;
};

constinit thread_local ShownClock shown_clock;

using std::chrono::milliseconds;

/// What the thread is told of a clock that stands at `reading`.
milliseconds told(DWORD clock, milliseconds reading) noexcept {
    if (shown_clock.function == nullptr) {
        return reading;
    }
    const auto count = static_cast<ULONGLONG>(reading.count());
    return milliseconds{shown_clock.function(clock, count, shown_clock.context)};
}

} // namespace

void NorvaneSetClock(PFN_NORVANE_CLOCK pfnClock, void* pvContext) noexcept {
    shown_clock = {pfnClock, pvContext};
}

void GetSystemTime(SYSTEMTIME* lpSystemTime) noexcept {
    const auto now = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
    *lpSystemTime = system_time_of(told(NORVANE_CLOCK_SYSTEM, now - file_time_epoch));
}

ULONGLONG GetTickCount64() noexcept {
    const auto passed = std::chrono::steady_clock::now().time_since_epoch();
    const milliseconds reading = std::chrono::floor<milliseconds>(passed);
    return static_cast<ULONGLONG>(told(NORVANE_CLOCK_TICKS, reading).count());
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, FILETIME* lpFileTime) noexcept {
    using namespace std::chrono;
    const SYSTEMTIME& fields = *lpSystemTime;
    const year_month_day date{year{fields.wYear}, month{fields.wMonth}, day{fields.wDay}};
    if (fields.wYear < first_year || fields.wYear > last_year || fields.wMonth > 12 ||
        fields.wDay > 31 || !date.ok() || fields.wHour > 23 || fields.wMinute > 59 ||
        fields.wSecond > 59 || fields.wMilliseconds > 999) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    *lpFileTime = file_time_of(sys_days{date} - file_time_epoch + hours{fields.wHour} +
                               minutes{fields.wMinute} + seconds{fields.wSecond} +
                               milliseconds{fields.wMilliseconds});
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, SYSTEMTIME* lpSystemTime) noexcept {
    const auto ticks = ticks_of(*lpFileTime);
    if (!ticks) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    *lpSystemTime = system_time_of(*ticks);
    return TRUE;
}

BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, FILETIME* lpLocalFileTime) noexcept {
    const auto ticks = ticks_of(*lpFileTime);
    LONGLONG local = 0;
    if (!ticks || __builtin_add_overflow(ticks->count(), zone_offset_now().count(), &local) ||
        local < 0) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    *lpLocalFileTime = file_time_of(Ticks{local});
    return TRUE;
}
