// Forms of one value: what BER may change, and what comes out of a re-encoding.
#include "asn1/AgainstLibcrypto.h"
#include "asn1/Decoded.h"
#include "asn1/Material.h"
#include "asn1/TreeText.h"

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

template <class T>
void expect_all_forms_to_be_one(const Bytes& der) {
    Decoded<T> plain(der);
    ASSERT_EQ(plain.status, 0) << plain.error();
    EXPECT_EQ(plain.encode(), der);
    // In the last one the lengths inside are as before and those around are not.
    for (const Bytes& ber : {to_indefinite(der), ber_long_length(der[0], content_of(der), 9)}) {
        Decoded<T> other(ber);
        ASSERT_EQ(other.status, 0) << other.error();
        EXPECT_EQ(tree_text(other.value), tree_text(plain.value));
        EXPECT_EQ(other.encode(), der);
    }
}

TEST(Encoding, FormsOfLengthsComeOutAsDer) {
    expect_all_forms_to_be_one<ASN1T_Certificate>(full_certificate());
    expect_all_forms_to_be_one<ASN1T_CertificateList>(full_crl());
    expect_all_forms_to_be_one<ASN1T_DistributionPointName>(context(0, all_general_names()));
    expect_all_forms_to_be_one<ASN1T_Name>(varied_name());
    for (const std::size_t length : {0x6fU, 0x70U, 0x7fU, 0x80U, 0xedU, 0xffU, 0x100U, 0xffffU}) {
        expect_all_forms_to_be_one<ASN1T_Name>(common_name(std::string(length, 'n')));
    }
    EXPECT_TRUE(both_accept_certificate(view(full_certificate())));
    EXPECT_TRUE(both_accept_certificate(view(to_indefinite(full_certificate()))));
}

TEST(Encoding, WhatIsSignedIsHandedOutWhereItStands) {
    Decoded<ASN1T_Certificate> certificate(full_certificate());
    ASN1BEREncodeBuffer out;
    ASSERT_GT(ASN1C_TBSCertificate(out, certificate.value.tbsCertificate).EncodeTo(out), 0);
    EXPECT_EQ(out.getMsgPtr(), certificate.input.data() + 4);
    ASN1T_Certificate never_decoded;
    EXPECT_LT(ASN1C_Certificate(out, never_decoded).EncodeTo(out), 1);
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

// Segments on two levels, some of them empty.
Bytes segments_of(int tag, const Bytes& content) {
    const bool bits = tag == 0x03 || tag == 0x81; // [1] is always a BIT STRING in these tests.
    const auto segment = [&](const Bytes& part, std::uint8_t unused) {
        return bits ? bit_string(part, unused) : octet_string(part);
    };
    const Bytes first = segment({content.begin() + (bits ? 1 : 0), content.end() - 1}, 0);
    const Bytes last = segment({content.back()}, content.front());
    const Bytes empty = segment({}, 0);
    return ber_segments(tag, {empty, tlv(bits ? 0x23 : 0x24, cat(first, empty)), last});
}

template <class T>
void expect_segments_to_be_joined(auto make) {
    const Bytes segmented = make(segments_of);
    ASN1CTXT ctxt;
    T plain;
    T joined;
    T indefinite;
    const Bytes der = make(tlv);
    ASSERT_EQ(decode_element(ctxt, view(der), plain), 0) << rtErrGetText(ctxt);
    ASSERT_EQ(decode_element(ctxt, view(segmented), joined), 0) << rtErrGetText(ctxt);
    EXPECT_EQ(tree_text(joined), tree_text(plain));
    const Bytes ber = to_indefinite(segmented);
    ASSERT_EQ(decode_element(ctxt, view(ber), indefinite), 0) << rtErrGetText(ctxt);
    EXPECT_EQ(tree_text(indefinite), tree_text(plain));
}

TEST(Segments, StringsOfAllKindsAreJoined) {
    const Bytes bits = {0x03, 0xaa, 0xbb, 0xc8};
    expect_segments_to_be_joined<ASN1T_Certificate>([&bits](auto string) {
        const CertificateBuilder builder{
            .not_before = string(0x17, text_bytes("260101000000Z")),
            .not_after = string(0x18, text_bytes("20500101000000Z")),
            .spki = cat(Key::ec(0).spki(), string(0x81, bits)),
            .extensions = {sequence(oid("2.5.29.14"), string(0x04, octet_string(Bytes(200, 7))))}};
        return sequence(builder.tbs(), sequence(oid("1.2.3")), string(0x03, bits));
    });
    expect_segments_to_be_joined<ASN1T_CRLDistributionPoints>([&bits](auto string) {
        const Bytes name = context(0, context(0, string(0x86, text_bytes("http://a"))));
        return sequence(sequence(name, string(0x81, bits)));
    });
}

TEST(Segments, ThoseOfOtherTypesAndOddBitsAreRefused) {
    for (const char* signature : {"23 03 0401aa", "23 08 030201aa 030200bb", "23 02 0300",
                                  "23 03 030101", "23 04 030208aa", "23 04 a402 0500"}) {
        Decoded<ASN1T_Certificate> refused(
            sequence(CertificateBuilder{}.tbs(), sequence(oid("1.2.3")), hex(signature)));
        EXPECT_LT(refused.status, 0) << signature;
        EXPECT_EQ(refused.error().find("Certificate.signature at"), 0) << refused.error();
    }
}

} // namespace
} // namespace norvane::testing
