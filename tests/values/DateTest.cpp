#include "values/Date.h"

#include <string>

#include <gtest/gtest.h>

#include "values/ErrorOf.h"

namespace norvane {
namespace {

constexpr std::uint64_t latest = 0x7FFFFFFFFFFFFFFF;
constexpr std::uint64_t epoch = 116444736000000000;
constexpr std::uint64_t second = 10'000'000;

constexpr CACMPT_Date ticks(std::uint64_t count) { return CACMPT_Date::from_ticks(count); }
constexpr std::uint64_t negative(std::uint64_t count) { return 0 - count; }

// The message of the plain CAException that is thrown in this module.
std::string message_of(auto operation) {
    const Error error = error_of(operation);
    EXPECT_EQ(error.type + error.module, "CAExceptionDate");
    return error.message;
}

constexpr const char* too_big = "time value is too big";

TEST(Date, FileTimesAreTruncatedTowardsZeroToMicroseconds) {
    for (const auto& [given, kept] : {std::pair(epoch + 9, epoch), {negative(19), negative(10)}}) {
        EXPECT_EQ(from_file_time(to_file_time(ticks(given))).ticks(), kept);
    }
}

TEST(Date, SecondsSince1970TruncateTowardsZeroAndWrap) {
    const std::pair<std::uint64_t, std::uint32_t> cases[] = {
        {epoch + 2 * second - 1, 1}, {epoch - 1, 0}, {epoch - second, 0xFFFFFFFF}, {0, 1240428288},
        {latest + 1, 159663333},
    };
    for (const auto& [count, seconds] : cases) {
        EXPECT_EQ(to_time_t(ticks(count)), seconds) << count;
    }
    EXPECT_EQ(message_of([] { return to_time_t(ticks(latest)); }), too_big);
}

TEST(Date, SumsDifferencesAndWhatTheyRefuse) {
    CACMPT_Date date{0x80000000, 0};
    subtract_from(date, {1, 5}); // unsigned
    EXPECT_EQ(date, (CACMPT_Date{0x7FFFFFFE, 0xFFFFFFFB}));
    EXPECT_EQ(message_of([&] {
                  subtract_from(date, {0x7FFFFFFE, 0xFFFFFFFC});
              }),
              "time value is too small");
    EXPECT_EQ(difference({1, 0}, {0, 1}), (CACMPT_Date{0, 0xFFFFFFFF}));
    for (const auto& [from, what] :
         {std::pair(CACMPT_Date{0, 1}, CACMPT_Date{1, 0}), {{0x80000000, 0}, {0, 0}}}) { // signed
        EXPECT_EQ(message_of([from = from, what = what] { return difference(from, what); }),
                  "time value is negative");
    }
    // Of all sums only the latest time is refused.
    date = ticks(latest - 1);
    EXPECT_EQ(message_of([&] { add_to(date, ticks(1)); }), too_big);
    EXPECT_EQ(date, ticks(latest - 1));
    add_to(date, ticks(2));
    EXPECT_EQ(date, ticks(latest + 1));
}

TEST(Date, QuotientsAreSignedAndBelowTheTimeoutLimit) {
    constexpr CACMPT_Date millisecond = CACMPT_Date::one_millisecond;
    EXPECT_EQ(divide(from_milliseconds(0x7FFFFFFE), millisecond), 0x7FFFFFFE);
    EXPECT_EQ(divide(ticks(negative(19'999)), millisecond), -1);
    EXPECT_EQ(from_milliseconds(0xFFFFFFFF).ticks(), 42'949'672'950'000U);

    for (const auto& [date, unit] : {std::pair(from_milliseconds(0x7FFFFFFF), millisecond),
                                     {ticks(latest + 1), ticks(negative(1))},
                                     {ticks(1), ticks(0)}}) {
        EXPECT_EQ(message_of([date = date, unit = unit] { return divide(date, unit); }), too_big);
    }
}

} // namespace
} // namespace norvane
