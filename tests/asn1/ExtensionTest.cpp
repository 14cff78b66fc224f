// Values of extensions and attributes, right and wrong.
#include "asn1/Decoded.h"
#include "asn1/Material.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

// A certificate with nothing but this extension.
struct WithExtension : Decoded<ASN1T_TBSCertificate> {
    WithExtension(const char* type, const Bytes& content)
        : Decoded(
              CertificateBuilder{.extensions = {extension(type, Critical::no, content)}}.tbs()) {}

    [[nodiscard]] const ASN1T_Extension& extension_read() const {
        return value.extensions.head->data;
    }
    template <class T>
    [[nodiscard]] const T& value_read() const {
        return *extension_read().value_as<T>();
    }
};

TEST(Extensions, WrongContentLeavesTheValueOutAndTheCertificateDecodes) {
    const struct {
        const char* type;
        std::vector<Bytes> wrong;
    } cases[] = {
        {"2.5.29.14", {bit_string({}), cat(octet_string({}), null()), {}}},
        {"2.5.29.15", {octet_string({}), hex("030208ff"), hex("0300")}},
        {"2.5.29.19", {sequence(integer(1), boolean(true)), sequence(integer(-1))}},
        {"2.5.29.20", {integer(-1), integer_octets({}), hex("020101 00")}},
        {"2.5.29.27", {enumerated(1)}},
        {"2.5.29.28",
         {sequence(context(0, context(2))), sequence(hex("8201ff 8101ff")), sequence(null())}},
        {"2.5.29.31", {sequence(sequence(context(0, all_general_names()))), null()}},
        {"2.5.29.35", {sequence(hex("8200")), sequence(hex("820101 8001aa"))}},
        {"2.5.29.37", {sequence(hex("0600"))}},
        {"2.5.29.46", {sequence(sequence(context(2, null())))}},
        {"1.3.6.1.5.5.7.1.1", {sequence(sequence(oid("1.2.3"))), {}}},
    };
    for (const auto& [type, wrong] : cases) {
        for (const Bytes& content : wrong) {
            WithExtension decoded(type, content);
            ASSERT_EQ(decoded.status, 0) << decoded.error();
            const ASN1T_Extension& extension = decoded.extension_read();
            EXPECT_TRUE(std::holds_alternative<std::monostate>(extension.value)) << type;
            EXPECT_EQ(bytes_of(extension.extnValue), content);
            EXPECT_EQ(extension.value_as<ASN1T_KeyUsage>(), nullptr);
        }
    }
}

TEST(Extensions, NumbersThatDoNotFitReadAsTheGreatest) {
    const Bytes twenty_octets = cat(Bytes{0x7f}, Bytes(19, 0));
    const struct {
        Bytes content;
        std::uint32_t number;
    } cases[] = {
        {{0}, 0},
        {{0x7f}, 127},
        {hex("00ffffffff"), 0xffffffff},
        {hex("0100000000"), 0xffffffff},
        {cat(Bytes(19, 0), Bytes{5}), 5},
        {twenty_octets, 0xffffffff},
        {cat(Bytes{1}, twenty_octets), 0xffffffff},
    };
    for (const auto& [content, number] : cases) {
        const Bytes value = integer_octets(content);
        EXPECT_EQ(WithExtension("2.5.29.20", value).value_read<ASN1T_CRLNumber>().value, number);
        EXPECT_EQ(WithExtension("2.5.29.27", value).value_read<ASN1T_CRLNumber>().value, number);
        EXPECT_EQ(WithExtension("2.5.29.19", sequence(value))
                      .value_read<ASN1T_BasicConstraints>()
                      .pathLenConstraint,
                  number);
    }
}

TEST(Extensions, ReasonsAreReadAsFarAsTheirBitsGo) {
    const struct {
        const char* content; // of the BIT STRING; null: absent
        std::uint32_t bits;
        int first_octet;
    } cases[] = {
        {nullptr, 0, 0x00}, {"00", 0, 0x00},     {"0780", 1, 0x80},   {"07ff", 1, 0x80},
        {"05ff", 3, 0xe0},  {"07ff80", 9, 0xff}, {"07417f", 9, 0x41}, {"07010203", 17, 0x01},
    };
    for (const auto& [content, bits, first_octet] : cases) {
        const Bytes reasons = content == nullptr ? Bytes{} : tlv(0x81, hex(content));
        const WithExtension decoded("2.5.29.31", sequence(sequence(reasons)));
        const ASN1T_DistributionPoint& point =
            decoded.value_read<ASN1T_CRLDistributionPoints>().elements.head->data;
        EXPECT_EQ(point.m.reasonsPresent, reasons.empty() ? 0 : 1);
        EXPECT_EQ(point.reasons.numbits, bits);
        EXPECT_EQ(point.reasons.first_octet(), first_octet);
        for (std::uint32_t i = 0; i < 24; ++i) {
            EXPECT_EQ(ASN1CBitStr(point.reasons).get(i),
                      i < bits && (reasons[3 + i / 8] & 0x80 >> i % 8) != 0);
        }
    }
}

TEST(Extensions, BerInsideAnExtensionDecodesAndIsKept) {
    WithExtension decoded("2.5.29.31",
                          to_indefinite(sequence(sequence(context(0, context(0, url("x")))))));
    const ASN1T_DistributionPointName& name =
        decoded.value_read<ASN1T_CRLDistributionPoints>().elements.head->data.distributionPoint;
    EXPECT_EQ(bytes_of(name.encoding), context(0, url("x")));
    EXPECT_EQ(bytes_of(name.fullName.elements.head->data.value), Bytes{'x'});
    EXPECT_EQ(decoded.encode(), decoded.input);
}

TEST(Names, ValuesAreTypedByAttributeAndReplaced) {
    Decoded<ASN1T_Name> name(varied_name());
    ASSERT_EQ(name.status, 0) << name.error();
    std::string alternatives;
    for (const ASN1T_RelativeDistinguishedName& rdn : name.value.rdnSequence) {
        for (ASN1T_AttributeTypeAndValue& attribute : rdn) {
            alternatives += attribute.valueDecoded ? std::to_string(attribute.value.t) : "-";
        }
    }
    EXPECT_EQ(alternatives, "0-45130-4--");
    replace_text(name.value.rdnSequence.head->data.head->data, view(text_bytes("DE")),
                 name.buffer.getCtxt().memory);
    Bytes expected = varied_name();
    std::ranges::copy(text_bytes("DE"), std::ranges::search(expected, text_bytes("RU")).begin());
    EXPECT_EQ(name.encode(), expected);
}

} // namespace
} // namespace norvane::testing
