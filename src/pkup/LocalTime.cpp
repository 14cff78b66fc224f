#include "pkup/LocalTime.h"

#include <cstdint>

namespace norvane {
namespace {

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

constexpr std::chrono::sys_days file_time_epoch =
    std::chrono::year{1601} / std::chrono::January / 1;

Ticks ticks_of(const FILETIME& time) {
    return Ticks{
        static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime)};
}

} // namespace

std::optional<std::chrono::sys_seconds> utc_of_local_date(DATE local) {
    SYSTEMTIME fields{};
    FILETIME time{};
    FILETIME shifted_again{};
    if (!VariantTimeToSystemTime(local, &fields) || !SystemTimeToFileTime(&fields, &time) ||
        !FileTimeToLocalFileTime(&time, &shifted_again)) {
        return std::nullopt;
    }
    // The offset is the same for all moments, so a second shift tells how far the first one went.
    const Ticks offset = ticks_of(shifted_again) - ticks_of(time);
    return std::chrono::floor<std::chrono::seconds>(file_time_epoch + ticks_of(time) - offset);
}

} // namespace norvane
