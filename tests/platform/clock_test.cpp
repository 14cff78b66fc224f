#include <norvane/wincrypt.h>

#include <bit>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>

namespace {

constexpr ULONGLONG unix_epoch = 116'444'736'000'000'000;
constexpr ULONGLONG first_invalid = ULONGLONG{1} << 63;

std::optional<ULONGLONG> to_local(ULONGLONG utc) {
    auto time = std::bit_cast<FILETIME>(utc);
    const BOOL done = FileTimeToLocalFileTime(&time, &time);
    return done ? std::optional(std::bit_cast<ULONGLONG>(time)) : std::nullopt;
}

} // namespace

TEST(Clock, ConvertsBothWaysOverTheWholeRangeOfDatesAndRefusesOthers) {
    // Year, month, day of the week, day, hour, minute, second, milliseconds.
    const std::pair<SYSTEMTIME, ULONGLONG> cases[] = {
        {{1601, 1, 1, 1, 0, 0, 0, 1}, 10'000},
        {{2000, 2, 2, 29, 12, 30, 45, 500}, unix_epoch + 951'827'445'500 * 10'000},
        {{30827, 12, 5, 31, 23, 59, 59, 999}, 9'223'149'887'999'990'000},
    };
    FILETIME time{};
    SYSTEMTIME back{};
    for (const auto& [fields, ticks] : cases) {
        EXPECT_TRUE(SystemTimeToFileTime(&fields, &time));
        EXPECT_EQ(std::bit_cast<ULONGLONG>(time), ticks);
        time = std::bit_cast<FILETIME>(ticks + 9'999); // below a millisecond: dropped
        ASSERT_TRUE(FileTimeToSystemTime(&time, &back));
        EXPECT_EQ(std::memcmp(&back, &fields, sizeof back), 0) << ticks;
    }
    time = std::bit_cast<FILETIME>(first_invalid);
    EXPECT_FALSE(FileTimeToSystemTime(&time, &back));
    const SYSTEMTIME refused[] = {{1600, 12, 0, 31, 23, 59, 59, 999},
                                  {30828, 1, 0, 1, 0, 0, 0, 0},
                                  {2024, 257, 0, 1, 0, 0, 0, 0}, // 1 in a byte
                                  {2100, 2, 0, 29, 0, 0, 0, 0},
                                  {2024, 1, 0, 1, 24, 0, 0, 0}};
    for (const SYSTEMTIME& fields : refused) {
        EXPECT_FALSE(SystemTimeToFileTime(&fields, &time)) << "case " << &fields - refused;
    }
}

TEST(Clock, ShiftsAllDatesByTheOffsetOfTodayAndRefusesOverflow) {
    // NOLINTBEGIN(concurrency-mt-unsafe): one thread
    const ULONGLONG offset = ULONGLONG{5 * 60 + 30} * 60 * 10'000'000;
    setenv("TZ", "<+0530>-5:30", 1); // east
    EXPECT_EQ(to_local(first_invalid - 1 - offset), first_invalid - 1);
    EXPECT_EQ(to_local(first_invalid - offset), std::nullopt);
    setenv("TZ", "<-0530>5:30", 1); // west
    EXPECT_EQ(to_local(offset), 0);
    EXPECT_EQ(to_local(offset - 1), std::nullopt);
    setenv("TZ", "WIN0SUM-1,M4.1.0,M10.1.0", 1);
    constexpr ULONGLONG half_a_year = 182 * 864'000'000'000;
    EXPECT_EQ(to_local(unix_epoch + half_a_year).value() - to_local(unix_epoch).value(),
              half_a_year);
    // NOLINTEND(concurrency-mt-unsafe)
}
