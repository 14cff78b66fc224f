#include "asn1/Time.h"

#include "asn1/Decoded.h"

#include <array>
#include <cstdio>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

// Empty if the text is not a time, as all getters must then say.
std::string fields_of(ASN1CTime& time) {
    const std::array fields{time.getYear(), time.getMonth(),  time.getDay(),
                            time.getHour(), time.getMinute(), time.getSecond()};
    if (fields[0] < 0) {
        EXPECT_EQ(fields,
                  (std::array{fields[0], fields[0], fields[0], fields[0], fields[0], fields[0]}));
        return "";
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%d-%02d-%02d %02d:%02d:%02d", fields[0], fields[1],
                  fields[2], fields[3], fields[4], fields[5]);
    return text.data();
}

template <class Time>
std::string read(std::string_view text) {
    ASN1BEREncodeBuffer buffer;
    Time time(buffer, text);
    return fields_of(time);
}

TEST(Times, UtcTimesAreReadInAllTheirForms) {
    for (const auto& [text, fields] : std::initializer_list<std::pair<const char*, const char*>>{
             {"500101000000Z", "1950-01-01 00:00:00"},
             {"491231235959Z", "2049-12-31 23:59:59"},
             {"000229123456Z", "2000-02-29 12:34:56"},
             {"2601011234Z", "2026-01-01 12:34:00"},
             {"260101003000+0100", "2025-12-31 23:30:00"},
             {"2512312330-0045", "2026-01-01 00:15:00"},
             {"491231235959-0001", "2050-01-01 00:00:59"},
             {"260101000000+0000", "2026-01-01 00:00:00"},
         }) {
        EXPECT_EQ(read<ASN1CUTCTime>(text), fields) << text;
    }
    for (const char* text :
         {"260101000000",    "26010100Z",      "260101000000.5Z",   "260001000000Z",
          "261301000000Z",   "260100000000Z",  "260229000000Z",     "260101240000Z",
          "260101006000Z",   "260101000060Z",  "260101000000+2400", "260101000000+0060",
          "260101000000+01", "260101000000Z ", "260101000000z",     " 60101000000Z",
          "2601010000 0Z",   "-60101000000Z",  "20260101000000Z",   ""}) {
        EXPECT_EQ(read<ASN1CUTCTime>(text), "") << text;
    }
}

TEST(Times, GeneralizedTimesAreReadInAllTheirForms) {
    for (const auto& [text, fields] : std::initializer_list<std::pair<const char*, const char*>>{
             {"20500101000000Z", "2050-01-01 00:00:00"},
             {"00010101000000Z", "1-01-01 00:00:00"},
             {"2026010112Z", "2026-01-01 12:00:00"},
             {"202601011234Z", "2026-01-01 12:34:00"},
             {"20260101123456.789Z", "2026-01-01 12:34:56"},
             {"20260101123456,7+0100", "2026-01-01 11:34:56"},
             {"21000228235959-0001", "2100-03-01 00:00:59"},
         }) {
        EXPECT_EQ(read<ASN1CGeneralizedTime>(text), fields) << text;
    }
    // Among others a local time of nobody knows where, and a fraction of an hour.
    for (const char* text :
         {"20260101123456", "20260101123456.Z", "2026010112.5Z", "202601011234.5Z",
          "00000101000000Z", "99991231235959-0001", "00010101000000+0001", "21000229000000Z",
          "20260101Z", "260101000000Z"}) {
        EXPECT_EQ(read<ASN1CGeneralizedTime>(text), "") << text;
    }
}

TEST(Times, SettersWriteTheTextAndRefuseWhatIsNoDate) {
    ASN1BEREncodeBuffer buffer;
    std::string_view text = "now\n and in a text that is far too long to be shown";
    ASN1CUTCTime time(buffer, text);
    EXPECT_LT(time.getHour(), 0);
    EXPECT_EQ(rtErrGetText(buffer.getCtxt()),
              "UTCTime at offset 0: expected a time in UTC or with its zone, found \"now? and "
              "in a text that is far too long ...\"");
    EXPECT_EQ(time.setTime(951827696), 0);
    EXPECT_EQ(text, "000229123456Z");
    for (const int value : {-255, -1, 60, 256 + 1, 512 + 12, 0x7fffffff}) {
        EXPECT_LT(time.setMonth(value), 0) << value;
        EXPECT_LT(time.setDay(value), 0) << value;
        EXPECT_LT(time.setHour(value), 0) << value;
        EXPECT_LT(time.setMinute(value), 0) << value;
        EXPECT_LT(time.setSecond(value), 0) << value;
    }
    EXPECT_LT(time.setYear(2001), 0); // It has no 29 February.
    EXPECT_LT(time.setYear(0), 0);
    EXPECT_LT(time.setYear(10000), 0);
    EXPECT_LT(time.setTime(INT64_MAX), 0);
    EXPECT_LT(time.setTime(INT64_MIN), 0);
    EXPECT_EQ(fields_of(time), "2000-02-29 12:34:56");
    EXPECT_EQ(time.setTime(-1), 0);

    std::array<char, 14> room{};
    EXPECT_EQ(time.getTimeStringLen(), 13);
    EXPECT_LT(time.getTimeString(room.data(), 13), 0);
    EXPECT_EQ(time.getTimeString(room.data(), 14), 0);
    EXPECT_STREQ(room.data(), "691231235959Z");
    time.clear();
    EXPECT_LT(time.getTimeStringLen(), 0);
    EXPECT_EQ(fields_of(time), "");
}

TEST(Times, YearsThatTwoDigitsCannotTellStayInTheObject) {
    ASN1BEREncodeBuffer buffer;
    std::string_view text;
    ASN1CUTCTime utc(buffer, text);
    for (const int year : {2050, 1949, 2149}) {
        EXPECT_EQ(utc.setYear(year), 0);
        EXPECT_EQ(utc.getYear(), year);
        EXPECT_TRUE(text.empty());
        EXPECT_LT(utc.getTimeStringLen(), 0);
        EXPECT_EQ(rtErrGetText(buffer.getCtxt()),
                  "UTCTime at offset 0: expected a year that two digits can tell, found " +
                      std::to_string(year));
    }
    EXPECT_EQ(utc.setYear(2049), 0);
    EXPECT_EQ(text, "490101000000Z");
    ASN1CGeneralizedTime general(buffer, text = {});
    EXPECT_EQ(general.setTime(253402300799), 0);
    EXPECT_EQ(text, "99991231235959Z");
    EXPECT_LT(general.setTime(253402300800), 0);
}

} // namespace
} // namespace norvane::testing
