// Integers, object identifiers, strings of characters and times.
#include "asn1/CharString.h"
#include "asn1/Decoded.h"
#include "asn1/Time.h"

#include <array>
#include <cstdio>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

TEST(Integers, EachEncodedValueHasATextOfItsOwn) {
    const struct {
        const char* content;
        const char* text;
        std::optional<std::int32_t> int32;
        std::optional<std::uint32_t> saturated;
    } cases[] = {
        {"0080", "0x0080", 128, 128},
        {"80", "-0x80", -128, {}},
        {"ffff", "-0x0001", -1, {}},
        {"80000000", "-0x80000000", INT32_MIN, {}},
        {"ff7fffffff", "-0x0080000001", {}, {}},
        {"ffffffffffff", "-0x000000000001", -1, {}},
        {"0123456789abcdef", "0x0123456789abcdef", {}, 0xffffffff},
    };
    for (const auto& [content, text, int32, saturated] : cases) {
        const Bytes octets = hex(content);
        const ASN1TInteger integer(view(octets));
        EXPECT_EQ(integer.text(), text);
        EXPECT_EQ(integer.to_int32(), int32) << text;
        EXPECT_EQ(integer.to_uint32_saturated(), saturated) << text;
        EXPECT_EQ(ASN1TInteger::parse(text), octets) << text;
    }
    for (const char* text : {"", "-0x", "0x0", "0x80", "-0x00", "-0x81", "0xAB", "0x0g", "12"}) {
        EXPECT_EQ(ASN1TInteger::parse(text), std::nullopt) << text;
    }
}

TEST(ObjectIdentifiers, WhatDoesNotFitIsReportedAndEqualsNothing) {
    for (const char* content : {"", "80", "8000", "2a80", "2a018001"}) {
        EXPECT_FALSE(ASN1TObjId::well_formed(view(hex(content)))) << content;
    }
    ASN1OBJID arcs;
    Bytes octets(ASN1OBJID::max_arcs - 1, 0x01); // The first octet is two arcs.
    EXPECT_TRUE(ASN1TObjId(view(octets)).get_arcs(arcs));
    EXPECT_EQ(arcs.numids, ASN1OBJID::max_arcs);
    octets.push_back(1);
    for (const Bytes& content : {octets, hex("2a9080808000"), hex("9080808050"),
                                 hex("2affffffffffffffffffffffffffff7f")}) {
        const ASN1TObjId oid(view(content));
        EXPECT_FALSE(oid.get_arcs(arcs));
        EXPECT_FALSE(oid == arcs);
    }
}

TEST(CharStrings, Utf8IsConvertedOrRefusedWhole) {
    ASN1CTXT ctxt;
    WideString wide;
    const auto convert = [&](const char* octets) {
        const Bytes utf8 = hex(octets);
        wide = {'a'};
        return rtUTF8ToWCS(ctxt, {reinterpret_cast<const char*>(utf8.data()), utf8.size()}, wide);
    };
    EXPECT_EQ(convert("7f c280 dfbf e0a080 ed9fbf ee8080 efbfbf f0908080 f48fbfbf"), 0);
    EXPECT_EQ(std::u16string(wide.begin(), wide.end()),
              u"a\x7f\u0080\u07ff\u0800\ud7ff\ue000\uffff\U00010000\U0010ffff");
    for (const char* octets :
         {"80", "c0af", "c1bf", "e09fbf", "eda080", "edbfbf", "f08fbfbf", "f4908080", "f888808080",
          "41c3", "e282", "f09f98", "c341", "e28241", "fe", "ff"}) {
        EXPECT_LT(convert(octets), 0) << octets;
        EXPECT_EQ(wide, WideString{'a'}) << octets;
    }
}

// The fields of the time, without separators; empty if the text is none.
template <class Time>
std::string fields_of(std::string_view text) {
    ASN1BEREncodeBuffer buffer;
    Time time(buffer, text);
    std::array<char, 20> fields{};
    if (time.getYear() >= 0) {
        std::snprintf(fields.data(), fields.size(), "%04d%02d%02d%02d%02d%02d", time.getYear(),
                      time.getMonth(), time.getDay(), time.getHour(), time.getMinute(),
                      time.getSecond());
    }
    return fields.data();
}

TEST(Times, AreReadInAllTheirForms) {
    const std::pair<const char*, const char*> utc[] = {{"500101000000Z", "19500101000000"},
                                                       {"491231235959Z", "20491231235959"},
                                                       {"2602281234Z", "20260228123400"},
                                                       {"491231235959-0001", "20500101000059"}};
    for (const auto& [text, fields] : utc) {
        EXPECT_EQ(fields_of<ASN1CUTCTime>(text), fields);
    }
    for (const char* text :
         {"260101000000", "26010100Z", "260101000000.5Z", "261301000000Z", "260229000000Z",
          "260101240000Z", "260101000060Z", "260101000000+2400", "260101000000+0060",
          "260101000000+01", "260101000000Z ", "-60101000000Z", "20260101000000Z"}) {
        EXPECT_EQ(fields_of<ASN1CUTCTime>(text), "") << text;
    }
    const std::pair<const char*, const char*> general[] = {
        {"00010101000000Z", "00010101000000"},
        {"2026010112Z", "20260101120000"},
        {"20260101123456,7+0100", "20260101113456"},
        {"21000228235959-0001", "21000301000059"}};
    for (const auto& [text, fields] : general) {
        EXPECT_EQ(fields_of<ASN1CGeneralizedTime>(text), fields);
    }
    // Among them a local time of nobody knows where, and a fraction of an hour.
    for (const char* text :
         {"20260101123456", "20260101123456.Z", "2026010112.5Z", "00000101000000Z",
          "99991231235959-0001", "00010101000000+0001", "21000229000000Z", "260101000000Z"}) {
        EXPECT_EQ(fields_of<ASN1CGeneralizedTime>(text), "") << text;
    }
}

TEST(Times, SettersWriteTheTextAndRefuseWhatIsNoDate) {
    ASN1BEREncodeBuffer buffer;
    std::string_view text;
    ASN1CUTCTime time(buffer, text);
    EXPECT_EQ(time.setTime(951827696), 0);
    EXPECT_LT(time.setMonth(256 + 1), 0);
    EXPECT_LT(time.setDay(30), 0);
    EXPECT_LT(time.setYear(2001), 0); // It has no 29 February.
    EXPECT_LT(time.setTime(253402300800), 0);
    std::array<char, 14> room{};
    EXPECT_LT(time.getTimeString(room.data(), 13), 0);
    EXPECT_EQ(time.getTimeString(room.data(), 14), 0);
    EXPECT_STREQ(room.data(), "000229123456Z");
    EXPECT_EQ(text, "000229123456Z");
}

} // namespace
} // namespace norvane::testing
