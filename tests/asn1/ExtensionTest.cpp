// Values of extensions, right and wrong.
#include "asn1/Decoded.h"
#include "asn1/Material.h"

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

TEST(Extensions, BerInsideAnExtensionDecodesAndIsKept) {
    const auto points = [](const Bytes& url, const Bytes& reasons) {
        return sequence(sequence(context(0, context(0, url)), reasons));
    };
    const Bytes url_segments = ber_segments(0x86, {octet_string({'x'}), octet_string({'y'})});
    const Bytes reasons_segments = ber_segments(0x81, {bit_string({0xaa}), bit_string({0x80}, 7)});
    WithExtension decoded("2.5.29.31", to_indefinite(points(url_segments, reasons_segments)));
    const ASN1T_DistributionPoint& point =
        decoded.value_read<ASN1T_CRLDistributionPoints>().elements.head->data;
    EXPECT_EQ(bytes_of(point.distributionPoint.fullName.elements.head->data.value),
              text_bytes("xy"));
    EXPECT_EQ(bytes_of(point.reasons.octets()), (Bytes{0xaa, 0x80}));
    EXPECT_EQ(point.reasons.numbits, 9U);
    EXPECT_EQ(decoded.encode(), decoded.input);
}

TEST(Extensions, NumbersAndBitsEndWhereTheirTypesDo) {
    WithExtension constraints("2.5.29.19", sequence(integer_octets(hex("0100000005"))));
    EXPECT_EQ(constraints.value_read<ASN1T_BasicConstraints>().pathLenConstraint, 0xffffffff);
    const Bytes octets = {0xff};
    EXPECT_TRUE(ASN1CBitStr({3, octets.data()}).get(2));
    EXPECT_FALSE(ASN1CBitStr({3, octets.data()}).get(3));
    EXPECT_FALSE(ASN1CBitStr({8, octets.data()}).get(8));
}

} // namespace
} // namespace norvane::testing
