#include "values/ObjectIdentifierText.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Der.h"
#include "values/ErrorOf.h"
#include "values/IntegerText.h"

namespace norvane {
namespace {

using testing::Bytes;
using testing::hex;

/// An identifier as it is decoded from the element, which must outlive it.
ASN1TObjId decoded(const Bytes& element) {
    const std::size_t header = element[1] < 0x80 ? 2 : element[1] - 0x80U + 2;
    return ASN1TObjId(
        {element.data() + header, static_cast<std::uint32_t>(element.size() - header)});
}

TEST(ObjectIdentifierText, ArcsAreReadAsNumbersOfTheirPrefix) {
    using Arcs = std::vector<std::uint32_t>;
    std::string most = "1";
    for (std::uint32_t i = 1; i < ASN1OBJID::max_arcs; ++i)
        most += ".1";
    const std::pair<std::string, std::optional<Arcs>> cases[] = {
        {"0x1F.08", std::nullopt}, // 8 is no octal digit
        {"0x1F.010.0", Arcs{31, 8, 0}},
        {" 1 \t.\n 2", Arcs{1, 2}},
        {"", Arcs{0}},
        {"1..2", Arcs{1, 0, 2}},
        {"1.2x.3", std::nullopt},
        {"1.4294967295", Arcs{1, 4294967295}},
        {"1.4294967296", std::nullopt},
        {most, Arcs(ASN1OBJID::max_arcs, 1)},
        {most + ".1", std::nullopt}};
    for (const auto& [text, arcs] : cases) {
        ASN1OBJID oid;
        const bool read = str_to_oid(text.c_str(), oid);
        EXPECT_EQ(read ? std::optional(Arcs(oid.subid.begin(), oid.subid.begin() + oid.numids))
                       : std::nullopt,
                  arcs)
            << text;
    }
    EXPECT_EQ(error_of([] { return str_to_oid("1.2x.3"); }),
              (Error{"CAException", "Can't convert str to oid.", "ASN1Util"}));
}

TEST(ObjectIdentifierText, EachArcMustBeShorterThanTheRoomThatIsLeft) {
    const auto text = [](const auto& oid, std::size_t capacity) {
        std::array<char, 600> buffer{};
        buffer.fill('#');
        oid_to_text(buffer.data(), oid, capacity, "too long");
        return std::string(buffer.data());
    };
    const ASN1OBJID oid = str_to_oid("1.2.840");
    const Error too_long{"Asn1DecodeException", "too long", "ASN1Util"};
    EXPECT_EQ(text(oid, 8), "1.2.840");
    EXPECT_EQ(error_of([&] { return text(oid, 7); }), too_long);
    EXPECT_EQ(text(ASN1OBJID{}, 1), "");
    const Bytes largest = testing::oid("2.4294967215.4294967295");
    EXPECT_EQ(text(decoded(largest), 64), "2.4294967215.4294967295");

    // Strings hold up to 511 characters.
    std::string longest = "1.2.3456787";
    while (longest.size() < 511)
        longest += ".1234";
    const Bytes fits = testing::oid(longest);
    EXPECT_EQ(oid_to_string(decoded(fits)), longest);
    const Error cannot{"CAException", "Can't convert oid to str.", "ASN1Traits"};
    for (const std::string& refused : {longest + "5", std::string("1.2.4294967296")}) {
        const Bytes element = testing::oid(refused);
        EXPECT_EQ(error_of([&] { return oid_to_string(decoded(element)); }), cannot);
        EXPECT_EQ(error_of([&] { return text(decoded(element), 64); }), too_long);
    }
    EXPECT_EQ(error_of([&] { return oid_to_string(ASN1TObjId()); }), cannot);
}

TEST(IntegerText, BecomesTheMagnitudeLowestByteFirst) {
    const std::pair<const char*, Bytes> cases[] = {
        {"0x0080", {0x80, 0x00}},
        {"0x010203", {0x03, 0x02, 0x01}},
        {"-0x80", {0x80}}, // a negative one is not told from a positive one
        {"0xFFab", {0xab, 0xff, 0x00}},
        {"255", {0xff, 0x00}},
        {"0377", {0xff, 0x00}},
        {"18446744073709551616", hex("0000000000000000 01")},
        {"0", {0x00}}};
    for (const auto& [text, bytes] : cases) {
        CACMPT_BLOB blob(Bytes{9, 9}.data(), 2);
        integer_text_to_blob(text, blob);
        EXPECT_EQ(Bytes(blob.data, blob.data + blob.length), bytes) << text;
    }
    for (const char* text : {"", "-", "0x", "12a", "08", "0xg", "1 "}) {
        CACMPT_BLOB blob;
        const Error error = error_of([&] { return integer_text_to_blob(text, blob), 0; });
        EXPECT_EQ(error.type + error.module, "Asn1ExceptionASN1Util") << text;
    }
}

} // namespace
} // namespace norvane
