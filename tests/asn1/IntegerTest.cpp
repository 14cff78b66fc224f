#include "asn1/Integer.h"

#include "asn1/Decoded.h"

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
        {"00", "0x00", 0, 0},
        {"0000", "0x0000", 0, 0},
        {"0080", "0x0080", 128, 128},
        {"80", "-0x80", -128, {}},
        {"8000", "-0x8000", -32768, {}},
        {"ff", "-0x01", -1, {}},
        {"ffff", "-0x0001", -1, {}},
        {"ff00", "-0x0100", -256, {}},
        {"7fffffff", "0x7fffffff", 0x7fffffff, 0x7fffffff},
        {"0080000000", "0x0080000000", {}, 0x80000000},
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
    for (const char* text : {"", "-", "0x", "-0x", "0x0", "0x80", "-0x00", "-0x81", "0xAB", "0X00",
                             "0x0g", "12", "+0x01", " 0x01", "0x01 ", "--0x01", "0x-1"}) {
        EXPECT_EQ(ASN1TInteger::parse(text), std::nullopt) << text;
    }
}

TEST(BigIntegers, TextsAreReadByRadixAndPrefix) {
    const struct {
        const char* text;
        int radix;
        bool negative;
        const char* magnitude;
    } cases[] = {
        {"0x0080", 0, false, "80"}, {"-0X00fF", 16, true, "ff"},
        {"-0x00", 0, false, "00"},  {"0x123", 0, false, "0123"},
        {"0", 0, false, "00"},      {"+255", 0, false, "ff"},
        {"0377", 0, false, "ff"},   {"ff", 16, false, "ff"},
        {"-101", 2, true, "05"},    {"18446744073709551616", 0, false, "010000000000000000"},
    };
    ASN1CTXT ctxt;
    ASN1BigInt number;
    for (const auto& [text, radix, negative, magnitude] : cases) {
        EXPECT_EQ(rtBigIntSetStr(ctxt, number, text, radix), 0) << text;
        EXPECT_EQ(number.magnitude, hex(magnitude)) << text;
        EXPECT_EQ(number.negative, negative) << text;
    }
    for (const char* text : {"", "-", "0x", "08", "0x1g", "1 ", " 1"}) {
        EXPECT_LT(rtBigIntSetStr(ctxt, number, text, 0), 0) << text;
    }
    EXPECT_LT(rtBigIntSetStr(ctxt, number, "-0x12z4", 0), 0);
    EXPECT_EQ(rtErrGetText(ctxt),
              "integer text at offset 5: expected a digit of radix 16, found \"z\"");
}

} // namespace
} // namespace norvane::testing
