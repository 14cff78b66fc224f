#include <norvane/wincrypt.h>

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <string>

namespace {

constexpr ULONGLONG ticks_per_second = 10'000'000;
constexpr ULONGLONG unix_epoch = 116'444'736'000'000'000;
constexpr ULONGLONG first_invalid = ULONGLONG{1} << 63;

FILETIME file_time(ULONGLONG ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

ULONGLONG ticks(const FILETIME& time) {
    return ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

std::optional<ULONGLONG> to_ticks(const SYSTEMTIME& fields) {
    FILETIME time{};
    SetLastError(ERROR_SUCCESS);
    if (!SystemTimeToFileTime(&fields, &time)) {
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        return std::nullopt;
    }
    return ticks(time);
}

std::optional<ULONGLONG> to_local(ULONGLONG utc) {
    FILETIME time = file_time(utc);
    SetLastError(ERROR_SUCCESS);
    if (!FileTimeToLocalFileTime(&time, &time)) {
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(ticks(time), utc) << "the output is untouched on failure";
        return std::nullopt;
    }
    return ticks(time);
}

std::string text(const SYSTEMTIME& t) {
    std::string joined;
    for (const int field : {t.wYear, t.wMonth, t.wDayOfWeek, t.wDay, t.wHour, t.wMinute, t.wSecond,
                            t.wMilliseconds}) {
        joined += std::to_string(field) + ' ';
    }
    return joined;
}

/// Each test that depends on the zone sets it, so none has to be put back.
void set_zone(const char* zone) {
    setenv("TZ", zone, 1); // NOLINT(concurrency-mt-unsafe): these tests have one thread
    tzset(); // localtime_r of the tests need not notice the change
}

} // namespace

TEST(Clock, ConvertsBothWaysOverTheWholeRangeOfDates) {
    // Year, month, day of the week, day, hour, minute, second, milliseconds.
    const struct {
        SYSTEMTIME fields;
        ULONGLONG ticks;
    } cases[] = {
        {{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
        {{1601, 1, 1, 1, 0, 0, 0, 1}, 10'000},
        {{1700, 3, 1, 1, 0, 0, 0, 0}, 31'292'352'000'000'000},
        {{1969, 12, 3, 31, 23, 59, 59, 999}, unix_epoch - 10'000},
        {{1970, 1, 4, 1, 0, 0, 0, 0}, unix_epoch},
        {{2000, 2, 2, 29, 12, 30, 45, 500}, unix_epoch + 951'827'445'500 * 10'000},
        {{2038, 1, 2, 19, 3, 14, 8, 0}, unix_epoch + 2'147'483'648 * ticks_per_second},
        {{2100, 3, 1, 1, 0, 0, 0, 0}, unix_epoch + 4'107'542'400 * ticks_per_second},
        {{9999, 12, 5, 31, 23, 59, 59, 0}, unix_epoch + 253'402'300'799 * ticks_per_second},
        {{30827, 12, 5, 31, 23, 59, 59, 999}, 9'223'149'887'999'990'000},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(text(item.fields));
        SYSTEMTIME without_day_of_week = item.fields;
        without_day_of_week.wDayOfWeek = 77;
        EXPECT_EQ(to_ticks(without_day_of_week), item.ticks);
        const FILETIME time = file_time(item.ticks + 9'999); // below a millisecond: dropped
        SYSTEMTIME back{};
        ASSERT_TRUE(FileTimeToSystemTime(&time, &back));
        EXPECT_EQ(text(back), text(item.fields));
    }
}

TEST(Clock, RefusesFieldsThatMakeNoDateOrTime) {
    const SYSTEMTIME cases[] = {
        {1600, 12, 0, 31, 23, 59, 59, 999}, {30828, 1, 0, 1, 0, 0, 0, 0},
        {65535, 1, 0, 1, 0, 0, 0, 0},       {2024, 0, 0, 1, 0, 0, 0, 0},
        {2024, 13, 0, 1, 0, 0, 0, 0},       {2024, 257, 0, 1, 0, 0, 0, 0}, // 1 in a byte
        {2024, 1, 0, 0, 0, 0, 0, 0},        {2024, 4, 0, 31, 0, 0, 0, 0},
        {2024, 1, 0, 257, 0, 0, 0, 0},      {2024, 2, 0, 30, 0, 0, 0, 0},
        {2023, 2, 0, 29, 0, 0, 0, 0},       {2100, 2, 0, 29, 0, 0, 0, 0},
        {2024, 1, 0, 1, 24, 0, 0, 0},       {2024, 1, 0, 1, 0, 60, 0, 0},
        {2024, 1, 0, 1, 0, 0, 60, 0},       {2024, 1, 0, 1, 0, 0, 0, 1000},
    };
    for (const SYSTEMTIME& fields : cases) {
        EXPECT_EQ(to_ticks(fields), std::nullopt) << text(fields);
    }
}

TEST(Clock, EndsFileTimesBelowTheTopBit) {
    SYSTEMTIME fields{};
    FILETIME time = file_time(first_invalid - 1);
    ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
    EXPECT_EQ(text(fields), "30828 9 4 14 2 48 5 477 ");
    for (const ULONGLONG invalid : {first_invalid, ~ULONGLONG{0}}) {
        time = file_time(invalid);
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(FileTimeToSystemTime(&time, &fields));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
}

TEST(Clock, ReadsThePresentInUtc) {
    set_zone("<+1245>-12:45");
    const auto before = static_cast<ULONGLONG>(std::time(nullptr));
    SYSTEMTIME now{};
    GetSystemTime(&now);
    const auto after = static_cast<ULONGLONG>(std::time(nullptr));
    const ULONGLONG seconds = (to_ticks(now).value() - unix_epoch) / ticks_per_second;
    EXPECT_LE(before, seconds + 1); // time() may lag behind the clock by a tick of the kernel
    EXPECT_LE(seconds, after + 1);
}

TEST(Clock, ShiftsToLocalTimeAndRefusesOverflow) {
    const ULONGLONG offset = ULONGLONG{5 * 60 + 30} * 60 * ticks_per_second;
    set_zone("<+0530>-5:30"); // east
    EXPECT_EQ(to_local(0), offset);
    EXPECT_EQ(to_local(first_invalid - 1 - offset), first_invalid - 1);
    EXPECT_EQ(to_local(first_invalid - offset), std::nullopt);

    set_zone("<-0530>5:30"); // west
    EXPECT_EQ(to_local(offset), 0);
    EXPECT_EQ(to_local(offset - 1), std::nullopt);
    EXPECT_EQ(to_local(first_invalid), std::nullopt);
}

TEST(Clock, UsesTheOffsetOfTodayForAllDates) {
    set_zone("WIN0SUM-1,M4.1.0,M10.1.0");
    const ULONGLONG january = to_ticks({2020, 1, 0, 15, 0, 0, 0, 0}).value();
    const ULONGLONG july = to_ticks({2020, 7, 0, 15, 0, 0, 0, 0}).value();
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const ULONGLONG offset = static_cast<ULONGLONG>(local.tm_gmtoff) * ticks_per_second;
    EXPECT_EQ(to_local(january).value() - january, offset);
    EXPECT_EQ(to_local(july).value() - july, offset);
}
