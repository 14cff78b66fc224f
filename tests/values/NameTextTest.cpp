#include "values/NameText.h"

#include <string>

#include <gtest/gtest.h>

#include "support/Name.h"
#include "values/ErrorOf.h"

namespace norvane {
namespace {

using namespace testing;

CACMPT_BLOB blob(const Bytes& bytes) {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}
std::u16string value_text(const Bytes& element) { return attribute_value_to_text(blob(element)); }
std::u16string name_text(const Bytes& name) { return name_blob_to_text(blob(name)); }

TEST(NameText, AttributesAreNamedByTheTableAndJoinedInEncodedOrder) {
    std::vector<Attribute> attributes;
    for (const char* type : {"2.5.4.3", "2.5.4.6", "2.5.4.7", "2.5.4.8", "1.2.840.113549.1.9.1",
                             "2.5.4.10", "2.5.4.11", "2.5.4.12", "2.5.4.42", "2.5.4.43", "2.5.4.4",
                             "2.5.4.65", "0.9.2342.19200300.100.1.25", "2.5.4.9", "2.5.4.24"})
        attributes.push_back({type, utf8("v")});
    EXPECT_EQ(name_text(name(attributes)),
              u"CN=v, C=v, L=v, ST=v, Email=v, O=v, OU=v, Title=v, GivenName=v, Initials=v, SN=v, "
              u"PS=v, DC=v, STREET=v, =v");
    const Attribute a{"2.5.4.3", printable("a")};
    const Attribute b{"2.5.4.10", utf8("b, c=")};
    EXPECT_EQ(name_text(sequence(rdn({a, b}), rdn({a}))), u"CN=a + O=b, c=, CN=a");
    // A value outside the table is never decoded.
    EXPECT_EQ(name_text(name({{"1.2.643.3.131.1.1", utf8("\xff")}})), u"1.2.643.3.131.1.1=#0C01FF");
}

TEST(NameText, ValuesAreReadByTheirTag) {
    const std::pair<Bytes, std::u16string> cases[] = {
        {utf8("\xd0\x96\xf0\x9f\x98\x80"), u"\u0416\U0001f600"},
        {printable(""), u""},
        {teletex("\xe9\xff"), u"\u00e9\u00ff"},
        {tlv(0x1e, hex("0416 d83d")), {0x0416, 0xd83d}}, // units, not characters
        {tlv(0x1c, hex("00000416 0001f600")), u"\u0416\U0001f600"},
        {ber_segments(0x0c, {octet_string({'a'}), octet_string({'b'})}), u"ab"}};
    for (const auto& [element, text] : cases)
        EXPECT_EQ(value_text(element), text);
}

TEST(NameText, OtherTypesAreUnsupportedAndIllFormedStringsFail) {
    const Error unsupported{"CAException", "Unsupported string type", "ASN1Types"};
    for (const Bytes& element :
         {integer(1), tlv(0x12, {'1'}), tlv(0x1a, {'a'}), tlv(0x8c, {'a'})}) {
        EXPECT_EQ(error_of([&] { return name_text(name({{"2.5.4.3", element}})); }), unsupported);
    }
    for (const Bytes& element :
         {Bytes{}, hex("0c05 61"), utf8("\xed\xa0\x80"), tlv(0x1e, {0, 'a', 0}),
          tlv(0x1c, {0, 0, 0, 'a', 0}), tlv(0x1c, hex("00110000"))}) {
        const Error error = error_of([&] { return value_text(element); });
        EXPECT_EQ(error.type + error.module, "Asn1ExceptionASN1Types");
    }
    for (const Bytes& garbage : {Bytes{}, null(), sequence(sequence())}) {
        const Error error = error_of([&] { return name_text(garbage); });
        EXPECT_EQ(error.type + error.module, "Asn1ExceptionASN1Traits");
    }
    EXPECT_EQ(error_of([] {
                  return name_text(name({{"1.2.4294967296", null()}}));
              }).message,
              "Can't convert oid to str.");
}

} // namespace
} // namespace norvane
