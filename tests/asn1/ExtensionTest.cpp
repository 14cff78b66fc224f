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

    template <class T>
    [[nodiscard]] const T& value_read() const {
        return *value.extensions.head->data.value_as<T>();
    }
};

TEST(Extensions, WrongContentLeavesTheValueOutAndTheCertificateDecodes) {
    const std::pair<const char*, std::vector<Bytes>> cases[] = {
        {"2.5.29.14", {cat(octet_string({}), null()), {}}},
        {"2.5.29.15", {hex("030208ff"), hex("0300")}},
        {"2.5.29.19", {sequence(integer(1), boolean(true)), sequence(integer(-1))}},
        {"2.5.29.20", {integer(-1), integer_octets({}), hex("020101 00")}},
        {"2.5.29.28", {sequence(context(0, context(2))), sequence(hex("8201ff 8101ff"))}},
        {"2.5.29.31", {sequence(sequence(context(0, all_general_names())))}},
        {"2.5.29.35",
         {sequence(hex("8200")), sequence(hex("820101 8001aa")),
          sequence(context(1, context(4, common_name("A"), null())))}},
    };
    for (const auto& [type, wrong] : cases) {
        for (const Bytes& content : wrong) {
            WithExtension decoded(type, content);
            ASSERT_EQ(decoded.status, 0) << decoded.error();
            const ASN1T_Extension& extension = decoded.value.extensions.head->data;
            EXPECT_TRUE(std::holds_alternative<std::monostate>(extension.value)) << type;
            EXPECT_EQ(bytes_of(extension.extnValue), content);
        }
    }
}

TEST(Extensions, NumbersThatDoNotFitReadAsTheGreatest) {
    const std::pair<Bytes, std::uint32_t> cases[] = {
        {{0x7f}, 127},
        {hex("00ffffffff"), 0xffffffff},
        {hex("0100000000"), 0xffffffff},
        {cat(Bytes(19, 0), Bytes{5}), 5},
        {cat(Bytes{0x01, 0x7f}, Bytes(19, 0)), 0xffffffff},
    };
    for (const auto& [content, number] : cases) {
        const Bytes value = integer_octets(content);
        EXPECT_EQ(WithExtension("2.5.29.20", value).value_read<ASN1T_CRLNumber>().value, number);
        EXPECT_EQ(WithExtension("2.5.29.19", sequence(value))
                      .value_read<ASN1T_BasicConstraints>()
                      .pathLenConstraint,
                  number);
    }
}

TEST(BitStrings, BitsBehindTheEndAreNotSet) {
    const Bytes octets = {0xff, 0x7f};
    EXPECT_EQ((ASN1TBitStr{3, octets.data()}.first_octet()), 0xe0);
    EXPECT_TRUE(ASN1CBitStr({3, octets.data()}).get(2));
    EXPECT_FALSE(ASN1CBitStr({3, octets.data()}).get(3));
    EXPECT_EQ((ASN1TBitStr{9, octets.data()}.first_octet()), 0xff);
    EXPECT_FALSE(ASN1CBitStr({9, octets.data()}).get(8));
    EXPECT_EQ(ASN1TBitStr{}.first_octet(), 0);
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
    const Bytes old = text_bytes("RU");
    Bytes expected = varied_name();
    std::ranges::copy(text_bytes("DE"),
                      std::search(expected.begin(), expected.end(), old.begin(), old.end()));
    EXPECT_EQ(name.encode(), expected);
}

} // namespace
} // namespace norvane::testing
