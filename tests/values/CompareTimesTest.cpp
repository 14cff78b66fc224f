#include "values/CompareTimes.h"

#include <string>

#include <gtest/gtest.h>

#include "values/ErrorOf.h"

namespace norvane {
namespace {

constexpr int utc = ASN1T_Time::utcTime_chosen;
constexpr int general = ASN1T_Time::generalTime_chosen;

int sign(int value) { return (value > 0) - (value < 0); }

TEST(CompareTimes, FieldsDecideFromTheYearDownWhateverTheTypes) {
    // In ascending order; equal numbers are equal times.
    const struct {
        int place;
        ASN1T_Time time;
    } times[] = {{1, {utc, "500101000000Z"}},
                 {1, {general, "19500101000000Z"}},
                 {2, {utc, "991231235959Z"}},
                 {3, {general, "20000101000000.999Z"}}, // the fraction counts for nothing
                 {3, {utc, "9912311900-0500"}},
                 {4, {utc, "000101000100Z"}},
                 {5, {general, "2000010101Z"}},
                 {6, {utc, "000102000000Z"}},
                 {7, {utc, "491231235959Z"}},
                 {8, {general, "99991231235959Z"}}};
    for (const auto& a : times)
        for (const auto& b : times)
            EXPECT_EQ(sign(compare_times(a.time, b.time)), sign(a.place - b.place))
                << a.time.text << " and " << b.time.text;
    EXPECT_EQ(compare_times({utc, "260301000000Z"}, {general, "20230101000000Z"}), 3);
    EXPECT_EQ(compare_times({utc, "260101000005Z"}, {utc, "260101000030Z"}), -25);
}

TEST(CompareTimes, AVerifyTimeSetByFieldsComparesBeyondWhatItsTextCanTell) {
    ASN1BEREncodeBuffer buffer;
    std::string_view text;
    ASN1CUTCTime verify_time(buffer, text);
    verify_time.clear();
    EXPECT_EQ(verify_time.setYear(2051), 0);
    EXPECT_EQ(verify_time.setMonth(3), 0);
    EXPECT_LT(compare_times({utc, "510301000000Z"}, verify_time), 0); // 1951
    EXPECT_EQ(compare_times({general, "20510301000000Z"}, verify_time), 0);
    EXPECT_GT(compare_times({general, "20510301000001Z"}, verify_time), 0);
    EXPECT_EQ(error_of([&] { return time_text(buffer, verify_time); }).type, "Asn1Exception");
}

TEST(CompareTimes, DatesOfTimesDropFractionsAndBeginIn1601) {
    EXPECT_EQ(to_time_t(date_from_asn1_time("19700101030001.9+0300", general)), 1U);
    EXPECT_EQ(date_from_asn1_time("16010101000000Z", general).ticks(), 0U);
    EXPECT_EQ(error_of([] { return date_from_asn1_time("16001231235959Z", general); }),
              (Error{"date_exception", "ivalid time value", "Date"}));
}

TEST(CompareTimes, UnreadableTimesAndOtherKindsThrow) {
    const ASN1T_Time good{utc, "260301000000Z"};
    const ASN1T_Time odd{3, good.text};
    const Error unsupported{"Asn1DecodeException", "Unsupported ASN1T_Time.t", "ASN1Util"};
    EXPECT_EQ(error_of([&] { return compare_times(good, odd); }), unsupported);
    EXPECT_EQ(error_of([&] { return date_from_asn1_time(good.text, 3); }),
              (Error{"Asn1DecodeException", "Unknown time format.", "ASN1Traits"}));
    for (const ASN1T_Time& bad : {ASN1T_Time{utc, ""}, ASN1T_Time{general, "20260301000000"}}) {
        EXPECT_EQ(error_of([&] { return compare_times(good, bad); }).type, "Asn1Exception");
        const Error error = error_of([&] { return date_from_asn1_time(bad.text, bad.t); });
        EXPECT_EQ(error.type + error.module, "Asn1ExceptionASN1Util");
    }
}

} // namespace
} // namespace norvane
