#include <norvane/platform/variant.h>

#include <chrono>
#include <cmath>

namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;

constexpr sys_days date_epoch = std::chrono::year{1899} / std::chrono::December / 30;
constexpr sys_days first_day = std::chrono::year{100} / std::chrono::January / 1;
constexpr sys_days last_day = std::chrono::year{9999} / std::chrono::December / 31;
constexpr double seconds_per_day = 86'400;

} // namespace

INT SystemTimeToVariantTime(SYSTEMTIME* lpSystemTime, DATE* pvtime) noexcept {
    using namespace std::chrono;
    const SYSTEMTIME& fields = *lpSystemTime;
    if (fields.wMonth < 1 || fields.wMonth > 12 || fields.wDay > 31 || fields.wHour > 23 ||
        fields.wMinute > 59 || fields.wSecond > 59) {
        return FALSE;
    }
    const sys_days day =
        sys_days{year{fields.wYear} / month{fields.wMonth} / 1} - days{1} + days{fields.wDay};
    if (day < first_day || day > last_day) {
        return FALSE;
    }
    const seconds time = hours{fields.wHour} + minutes{fields.wMinute} + seconds{fields.wSecond};
    const auto whole = static_cast<double>((day - date_epoch).count());
    const double fraction = static_cast<double>(time.count()) / seconds_per_day;
    *pvtime = whole < 0 ? whole - fraction : whole + fraction;
    return TRUE;
}

INT VariantTimeToSystemTime(DATE vtime, SYSTEMTIME* lpSystemTime) noexcept {
    constexpr auto first = static_cast<double>((first_day - date_epoch).count());
    constexpr auto last = static_cast<double>((last_day - date_epoch).count());
    const double whole = std::trunc(vtime);
    if (!(whole >= first && whole <= last)) { // not a number fails here as well
        return FALSE;
    }
    const seconds time{std::lround(std::fabs(vtime - whole) * seconds_per_day)};
    const auto moment = date_epoch + days{static_cast<int>(whole)} + time;
    const auto day = std::chrono::floor<days>(moment); // rounding may have made it the next
    if (day > last_day) {
        return FALSE;
    }
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss clock{moment - day};
    const auto word = [](auto number) { return static_cast<WORD>(number); };
    *lpSystemTime = {.wYear = word(static_cast<int>(date.year())),
                     .wMonth = word(static_cast<unsigned>(date.month())),
                     .wDayOfWeek = word(std::chrono::weekday{day}.c_encoding()),
                     .wDay = word(static_cast<unsigned>(date.day())),
                     .wHour = word(clock.hours().count()),
                     .wMinute = word(clock.minutes().count()),
                     .wSecond = word(clock.seconds().count()),
                     .wMilliseconds = 0};
    return TRUE;
}
