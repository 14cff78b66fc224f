#include "Times.h"

#include <array>
#include <charconv>
#include <cstdio>

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

bool is_utc(std::string_view zone) {
    return zone == "Z" || zone == "z" || zone == "+00:00" || zone == "-00:00";
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
    SYSTEMTIME fields{};
    for (const Field& field : layout) {
        const auto number = take_number(text, field.digits);
        if (!number || (!field.end.empty() && !take_one_of(text, field.end))) {
            return std::nullopt;
        }
        fields.*field.member = *number;
    }
    FILETIME time{};
    if (!take_fraction(text) || !is_utc(text) || SystemTimeToFileTime(&fields, &time) == FALSE) {
        return std::nullopt;
    }
    return time;
}

FILETIME now() {
    SYSTEMTIME fields{};
    FILETIME time{};
    GetSystemTime(&fields);
    static_cast<void>(SystemTimeToFileTime(&fields, &time));
    return time;
}

int compare(const FILETIME& a, const FILETIME& b) noexcept {
    return ticks(a) < ticks(b) ? -1 : ticks(a) > ticks(b) ? 1 : 0;
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
