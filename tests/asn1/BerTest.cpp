// Forms of one value: what BER may change, and what comes out of a re-encoding.
#include "asn1/AgainstLibcrypto.h"
#include "asn1/Decoded.h"
#include "asn1/Material.h"

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

template <class T>
void expect_all_forms_to_be_one(const Bytes& der) {
    // In the last one the lengths inside are as before and those around are not.
    for (const Bytes& ber :
         {der, to_indefinite(der), ber_long_length(der[0], content_of(der), 9)}) {
        Decoded<T> decoded(ber);
        ASSERT_EQ(decoded.status, 0) << decoded.error();
        EXPECT_EQ(decoded.encode(), der);
    }
}

TEST(Encoding, FormsOfLengthsComeOutAsDer) {
    expect_all_forms_to_be_one<ASN1T_Certificate>(full_certificate());
    expect_all_forms_to_be_one<ASN1T_CertificateList>(full_crl());
    for (const std::size_t length : {0x6fU, 0x70U, 0x7fU, 0x80U, 0xedU, 0xffU, 0x100U, 0xffffU}) {
        expect_all_forms_to_be_one<ASN1T_Name>(common_name(std::string(length, 'n')));
    }
}

TEST(Encoding, ExplicitDefaultsSurvive) {
    const Bytes explicit_no =
        sequence(oid("2.5.29.19"), boolean(false), octet_string(sequence(boolean(false))));
    const Bytes odd_yes = sequence(oid("1.2.3"), hex("010101"), octet_string({}));
    Decoded<ASN1T_TBSCertificate> tbs(
        CertificateBuilder{.version = 1, .extensions = {explicit_no, odd_yes}}.tbs());
    ASSERT_EQ(tbs.status, 0) << tbs.error();
    EXPECT_EQ(tbs.encode(), tbs.input);
    EXPECT_EQ(tbs.value.m.versionPresent, 1);
    EXPECT_FALSE(tbs.value.extensions.head->data.critical);
    EXPECT_TRUE(tbs.value.extensions.tail->data.critical); // Any octet but 0 is TRUE.
}

// Segments on two levels, one of them empty.
Bytes in_segments(int tag, const Bytes& content) {
    const Bytes first = octet_string({content.begin(), content.end() - 1});
    return ber_segments(
        tag, {ber_segments(0x04, {first, octet_string({})}), octet_string({content.back()})});
}

TEST(Segments, OfStringsAreJoined) {
    const Bytes bits =
        ber_segments(0x03, {bit_string({}), ber_segments(0x03, {bit_string({0xaa, 0xbb})}),
                            bit_string({0xc8}, 3)});
    const CertificateBuilder builder{
        .not_before = in_segments(0x17, text_bytes("260101000000Z")),
        .not_after = in_segments(0x18, text_bytes("20500101000000Z")),
        .extensions = {sequence(oid("2.5.29.14"), in_segments(0x04, octet_string({7, 8})))}};
    const Bytes segmented = sequence(builder.tbs(), sequence(oid("1.2.840.10045.4.3.2")), bits);
    for (const Bytes& form : {segmented, to_indefinite(segmented)}) {
        EXPECT_TRUE(both_accept_certificate(view(form)));
        Decoded<ASN1T_Certificate> decoded(form);
        EXPECT_EQ(bytes_of(decoded.value.signature.octets()), hex("aabbc8"));
        EXPECT_EQ(decoded.value.signature.numbits, 21U);
    }
}

TEST(Segments, ThoseOfOtherTypesAndOddBitsAreRefused) {
    for (const char* signature : {"23 03 0401aa", "23 08 030201aa 030200bb", "23 02 0300",
                                  "23 03 030101", "23 04 030208aa", "23 04 a402 0500"}) {
        Decoded<ASN1T_Certificate> refused(
            sequence(CertificateBuilder{}.tbs(), sequence(oid("1.2.3")), hex(signature)));
        EXPECT_LT(refused.status, 0) << signature;
    }
}

} // namespace
} // namespace norvane::testing
