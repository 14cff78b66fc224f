#include "Times.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <string>

namespace norvane {
namespace {

std::uint64_t ticks(const FILETIME& time) noexcept {
    return std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime;
}

/// Takes so many digits off the text.
std::optional<WORD> take_number(std::string_view& text, std::size_t digits) {
    WORD number = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        if (text.empty() || text.front() < '0' || text.front() > '9') {
            return std::nullopt;
        }
        number = static_cast<WORD>(number * 10 + (text.front() - '0'));
        text.remove_prefix(1);
    }
    return number;
}

/// Takes one of the characters off the text.
bool take_one_of(std::string_view& text, std::string_view characters) {
    const bool found = !text.empty() && characters.find(text.front()) != characters.npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

/// Takes a fraction of a second, which may be absent.
bool take_fraction(std::string_view& text) {
    if (!take_one_of(text, ".")) {
        return true;
    }
    const std::size_t end = text.find_first_not_of("0123456789");
    const bool found = end != 0 && end != text.npos;
    text.remove_prefix(found ? end : 0);
    return found;
}

constexpr std::int64_t ticks_of_a_second = 10'000'000;
constexpr std::int64_t seconds_of_a_minute = 60;
constexpr std::int64_t seconds_from_1601_to_1970 = 11'644'473'600;

/// Takes "Z", or an offset such as "+03:00" in seconds, which must be all there is.
std::optional<std::int64_t> take_offset(std::string_view text) {
    if (text == "Z" || text == "z") {
        return 0;
    }
    constexpr std::int64_t minutes_of_an_hour = 60;
    const bool is_west = text.starts_with('-');
    if (!take_one_of(text, "+-")) {
        return std::nullopt;
    }
    const auto hours = take_number(text, 2);
    if (!hours || !take_one_of(text, ":")) {
        return std::nullopt;
    }
    const auto minutes = take_number(text, 2);
    if (!minutes || !text.empty() || *hours >= 24 || *minutes >= minutes_of_an_hour) {
        return std::nullopt;
    }
    const std::int64_t seconds = (*hours * minutes_of_an_hour + *minutes) * seconds_of_a_minute;
    return is_west ? -seconds : seconds;
}

/// The moment so many seconds after 1601; nothing if there is none.
std::optional<FILETIME> moment(std::int64_t seconds) {
    SYSTEMTIME fields{};
    if (seconds < 0 || seconds > std::numeric_limits<std::int64_t>::max() / ticks_of_a_second) {
        return std::nullopt;
    }
    const auto ticks = static_cast<std::uint64_t>(seconds * ticks_of_a_second);
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    return FileTimeToSystemTime(&time, &fields) != FALSE ? std::optional(time) : std::nullopt;
}

/// Seconds since 1970, behind "@".
std::optional<FILETIME> parse_epoch(std::string_view digits) {
    std::int64_t seconds = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, fault] = std::from_chars(digits.data(), end, seconds);
    const bool is_whole =
        fault == std::errc() && stop == end &&
        seconds < std::numeric_limits<std::int64_t>::max() - seconds_from_1601_to_1970;
    return is_whole ? moment(seconds + seconds_from_1601_to_1970) : std::nullopt;
}

} // namespace

std::string time_text(const FILETIME& time) {
    SYSTEMTIME fields{};
    if (FileTimeToSystemTime(&time, &fields) == FALSE) {
        return "an unknown time";
    }
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02uZ",
                  unsigned{fields.wYear}, unsigned{fields.wMonth}, unsigned{fields.wDay},
                  unsigned{fields.wHour}, unsigned{fields.wMinute}, unsigned{fields.wSecond});
    return text.data();
}

bool is_set(const FILETIME& time) noexcept { return ticks(time) != 0; }

std::optional<FILETIME> parse_time(std::string_view text) {
    if (text.starts_with('@')) {
        return parse_epoch(text.substr(1));
    }
    struct Field {
        WORD SYSTEMTIME::*member;
        std::size_t digits;
        std::string_view end;
    };
    constexpr std::array<Field, 6> layout{{{&SYSTEMTIME::wYear, 4, "-"},
                                           {&SYSTEMTIME::wMonth, 2, "-"},
                                           {&SYSTEMTIME::wDay, 2, "Tt "},
                                           {&SYSTEMTIME::wHour, 2, ":"},
                                           {&SYSTEMTIME::wMinute, 2, ":"},
                                           {&SYSTEMTIME::wSecond, 2, ""}}};
    constexpr std::size_t date_length = 10;
    const std::string midnight = std::string(text) + "T00:00:00Z";
    if (text.size() == date_length) {
        text = midnight;
    }
    SYSTEMTIME fields{};
    for (const Field& field : layout) {
        const auto number = take_number(text, field.digits);
        if (!number || (!field.end.empty() && !take_one_of(text, field.end))) {
            return std::nullopt;
        }
        fields.*field.member = *number;
    }
    FILETIME time{};
    if (!take_fraction(text) || SystemTimeToFileTime(&fields, &time) == FALSE) {
        return std::nullopt;
    }
    const auto offset = take_offset(text);
    return offset ? moment(static_cast<std::int64_t>(ticks(time)) / ticks_of_a_second - *offset)
                  : std::nullopt;
}

FILETIME now() {
    SYSTEMTIME fields{};
    FILETIME time{};
    GetSystemTime(&fields);
    static_cast<void>(SystemTimeToFileTime(&fields, &time));
    return time;
}

std::string duration_text(std::uint32_t seconds) {
    struct Unit {
        std::uint32_t seconds;
        const char* name;
    };
    constexpr std::array<Unit, 5> units{
        {{31'536'000, "year"}, {86'400, "day"}, {3'600, "hour"}, {60, "minute"}, {1, "second"}}};
    const auto counted = [](std::uint32_t count, const char* name) {
        return std::to_string(count) + " " + name + (count == 1 ? "" : "s");
    };
    for (std::size_t i = 0; i < units.size(); ++i) {
        const Unit& unit = units.at(i);
        const std::uint32_t count = seconds / unit.seconds;
        if (count == 0) {
            continue;
        }
        std::string text = counted(count, unit.name);
        if (i + 1 < units.size()) {
            const Unit& smaller = units.at(i + 1);
            const std::uint32_t rest = seconds % unit.seconds / smaller.seconds;
            text += rest == 0 ? "" : " " + counted(rest, smaller.name);
        }
        return text;
    }
    return "0 seconds";
}

} // namespace norvane
