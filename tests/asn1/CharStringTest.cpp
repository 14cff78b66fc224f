#include "asn1/CharString.h"

#include "asn1/Decoded.h"

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

std::u16string units(const WideString& wide) { return {wide.begin(), wide.end()}; }

// Nothing if it does not convert, in which case the target must be as it was.
std::optional<std::u16string> from_utf8(const char* octets) {
    ASN1CTXT ctxt;
    WideString wide{'a'};
    const Bytes utf8 = hex(octets);
    if (rtUTF8ToWCS(ctxt, {reinterpret_cast<const char*>(utf8.data()), utf8.size()}, wide) < 0) {
        EXPECT_EQ(units(wide), u"a") << octets;
        return {};
    }
    return units(wide).substr(1);
}

std::optional<std::u16string> from_bmp(const Bytes& element) {
    ASN1CTXT ctxt;
    std::u16string_view text;
    if (xd_setp(ctxt, element.data(), view(element).length) < 0 ||
        xd_16BitCharStr(ctxt, text) < 0) {
        return {};
    }
    return std::u16string(text);
}

std::optional<std::u16string> from_universal(const char* octets) {
    ASN1CTXT ctxt;
    const Bytes element = tlv(0x1c, hex(octets));
    std::u32string_view text;
    WideString wide;
    if (xd_setp(ctxt, element.data(), view(element).length) < 0 ||
        xd_32BitCharStr(ctxt, text) < 0 || rtUCSToWCSString(ctxt, text, wide) < 0) {
        return {};
    }
    return units(wide);
}

TEST(CharStrings, Utf8IsConvertedOrRefusedWhole) {
    EXPECT_EQ(from_utf8(""), u"");
    EXPECT_EQ(from_utf8("00 7f"), std::u16string(u"\0\x7f", 2));
    EXPECT_EQ(from_utf8("c280 dfbf"), u"\u0080\u07ff");
    EXPECT_EQ(from_utf8("e0a080 ed9fbf ee8080 efbfbf"), u"\u0800\ud7ff\ue000\uffff");
    EXPECT_EQ(from_utf8("f0908080 f48fbfbf"), u"\U00010000\U0010ffff");
    for (const char* octets :
         {"80", "c0af", "c1bf", "e09fbf", "eda080", "edbfbf", "f08fbfbf", "f4908080", "f888808080",
          "41c3", "e282", "f09f98", "c341", "e28241", "fe", "ff"}) {
        EXPECT_EQ(from_utf8(octets), std::nullopt) << octets;
    }
}

TEST(CharStrings, WideFormsNeedWholeCharacters) {
    EXPECT_EQ(from_bmp(bmp(u"\u0416b")), u"\u0416b");
    EXPECT_EQ(from_bmp(bmp(u"")), u"");
    EXPECT_EQ(from_bmp(ber_segments(0x1e, {octet_string({4}), octet_string({22})})), u"\u0416");
    EXPECT_EQ(from_bmp(hex("1e03 041600")), std::nullopt);
    EXPECT_EQ(from_universal("00000041 0010ffff"), u"A\U0010ffff");
    for (const char* octets : {"0000d800", "00110000", "80000041", "000041"}) {
        EXPECT_EQ(from_universal(octets), std::nullopt) << octets;
    }
}

} // namespace
} // namespace norvane::testing
