#include "values/Date.h"

#include <string>

#include <gtest/gtest.h>

#include "values/Exceptions.h"

#include "PlainError.h"

namespace norvane {
namespace {

constexpr std::uint64_t latest = 0x7FFFFFFFFFFFFFFF;
constexpr std::uint64_t epoch = 116444736000000000;
constexpr std::uint64_t second = 10'000'000;

constexpr CACMPT_Date ticks(std::uint64_t count) { return CACMPT_Date::from_ticks(count); }
constexpr std::uint64_t negative(std::uint64_t count) { return 0 - count; }

constexpr const char* too_big = "Exception :'time value is too big' at file:'Date'";
constexpr const char* too_small = "Exception :'time value is too small' at file:'Date'";
constexpr const char* is_negative = "Exception :'time value is negative' at file:'Date'";

TEST(Date, FileTimesAreTruncatedTowardsZeroToMicroseconds) {
    const auto entered = [](std::uint64_t count) {
        return from_file_time(to_file_time(ticks(count))).ticks();
    };
    EXPECT_EQ(entered(19), 10U);
    EXPECT_EQ(entered(epoch + 9), epoch);
    EXPECT_EQ(entered(negative(19)), negative(10));
    EXPECT_EQ(to_file_time(ticks(epoch)).dwHighDateTime, 0x019DB1DEU);
}

TEST(Date, SystemTimesConvertAndImpossibleOnesThrowADateException) {
    SYSTEMTIME time{};
    time.wYear = 1970;
    time.wMonth = 1;
    time.wDay = 1;
    time.wMilliseconds = 7;
    EXPECT_EQ(from_system_time(time).ticks(), epoch + 70'000);
    time.wMonth = 13;
    try {
        static_cast<void>(from_system_time(time));
        ADD_FAILURE() << "month 13 was taken";
    } catch (const date_exception& error) {
        EXPECT_EQ(std::string(error.what()).find("Exception :'ivalid time value' at file:'Date'"),
                  0U);
    }
}

TEST(Date, SecondsSince1970TruncateTowardsZeroAndWrap) {
    const struct {
        std::uint64_t count;
        std::uint32_t seconds;
    } cases[] = {
        {epoch, 0},
        {epoch + 2 * second - 1, 1},
        {epoch - 1, 0},
        {epoch - second, 0xFFFFFFFF},
        {epoch + (second << 32), 0},
        {0, 1240428288},
        {latest - 1, 159663333},
        {latest + 1, 159663333},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(to_time_t(ticks(test.count)), test.seconds) << test.count;
    }
    EXPECT_EQ(plain_error_of([] { static_cast<void>(to_time_t(ticks(latest))); }), too_big);
}

TEST(Date, SubtractionComparesHighThenLowUnsigned) {
    CACMPT_Date date{1, 0};
    subtract_from(date, {0, 5});
    EXPECT_EQ(date, (CACMPT_Date{0, 0xFFFFFFFB}));
    subtract_from(date, date);
    EXPECT_EQ(date, CACMPT_Date{});
    date = {0x80000000, 0};
    subtract_from(date, {1, 0});
    EXPECT_EQ(date, (CACMPT_Date{0x7FFFFFFF, 0}));
    EXPECT_EQ(plain_error_of([&] { subtract_from(date, {0x7FFFFFFF, 1}); }), too_small);
    EXPECT_EQ(date, (CACMPT_Date{0x7FFFFFFF, 0}));
}

TEST(Date, OnlyTheLatestTimeIsRefusedAsASum) {
    CACMPT_Date date = ticks(latest - 2);
    EXPECT_EQ(plain_error_of([&] { add_to(date, ticks(2)); }), too_big);
    EXPECT_EQ(date, ticks(latest - 2));
    add_to(date, ticks(1));
    EXPECT_EQ(date, ticks(latest - 1));
    add_to(date, ticks(2));
    EXPECT_EQ(date, ticks(latest + 1));
}

TEST(Date, QuotientsAreSignedAndBelowTheTimeoutLimit) {
    constexpr CACMPT_Date millisecond = CACMPT_Date::one_millisecond;
    EXPECT_EQ(divide(from_milliseconds(0x7FFFFFFE), millisecond), 0x7FFFFFFE);
    EXPECT_EQ(divide(ticks(19'999), millisecond), 1);
    EXPECT_EQ(divide(ticks(negative(19'999)), millisecond), -1);
    EXPECT_EQ(from_milliseconds(0xFFFFFFFF).ticks(), 42'949'672'950'000U);

    const CACMPT_Date refused[][2] = {{from_milliseconds(0x7FFFFFFF), millisecond},
                                      {ticks(latest + 1), ticks(negative(1))},
                                      {ticks(1), ticks(0)}};
    for (const auto& [date, unit] : refused) {
        EXPECT_EQ(
            plain_error_of([&date = date, &unit = unit] { static_cast<void>(divide(date, unit)); }),
            too_big);
    }
}

TEST(Date, DifferencesAreSigned) {
    EXPECT_EQ(difference(ticks(5), ticks(5)), CACMPT_Date{});
    EXPECT_EQ(difference({1, 0}, {0, 1}), (CACMPT_Date{0, 0xFFFFFFFF}));
    EXPECT_EQ(plain_error_of([] { static_cast<void>(difference({0, 1}, {1, 0})); }), is_negative);
    EXPECT_EQ(plain_error_of([] {
                  static_cast<void>(difference({0x80000000, 0}, {0, 0}));
              }),
              is_negative);
}

} // namespace
} // namespace norvane
