#include "crypto/VerifySignature.h"

#include "support/Der.h"
#include "values/ErrorOf.h"
#include "values/Exceptions.h"

#include <gtest/gtest.h>

namespace norvane {
namespace {

using testing::Bytes;

constexpr const char* sha256 = "2.16.840.1.101.3.4.2.1";
constexpr const char* sha256_with_rsa = "1.2.840.113549.1.1.11";
constexpr const char* rsa = "1.2.840.113549.1.1.1";
constexpr const char* ec = "1.2.840.10045.2.1";

/// The identifier whose element this is, which must outlive it.
ASN1TObjId identified_by(const Bytes& element) {
    const std::size_t header = element.size() < 0x80 + 2 ? 2 : 3;
    return ASN1TObjId(
        {element.data() + header, static_cast<std::uint32_t>(element.size() - header)});
}

/// Verifies with a key that is none, which shows whether the algorithms let it come that far.
bool verify(const std::string& signature_oid, const std::string& key_oid,
            const Bytes& tbs_bytes = testing::hex("30 03 02 01 05")) {
    const Bytes signature_element = testing::oid(signature_oid);
    const Bytes key_element = testing::oid(key_oid);
    const Bytes octets = {1, 2, 3};
    ASN1T_SubjectPublicKeyInfo spki;
    spki.algorithm.algorithm = identified_by(key_element);
    spki.subjectPublicKey = {24, octets.data()};
    ASN1T_AlgorithmIdentifier algorithm;
    algorithm.algorithm = identified_by(signature_element);
    ASN1T_TBSCertificate tbs;
    tbs.encoding = {tbs_bytes.data(), static_cast<std::uint32_t>(tbs_bytes.size())};
    ASN1BEREncodeBuffer buffer;
    const ASN1C_TBSCertificate control(buffer, tbs);
    return verify_signature(buffer, control, ASN1TBitStr{24, octets.data()}, spki, algorithm);
}

/// "1.2" and then arcs up to this length.
std::string long_oid(std::size_t length) {
    std::string text = "1.2";
    while (text.size() + 5 < length) {
        text += ".444";
    }
    return text + "." + std::string(length - text.size() - 1, '5');
}

} // namespace

TEST(VerifySignature, AnswersNoWithoutAnExceptionWhereAlgorithmsDoNotBelongTogether) {
    for (const auto& [signature, key] : {std::pair<std::string, const char*>("1.2.3", rsa),
                                         {rsa, rsa}, // a signature of no hash class
                                         {sha256, rsa},
                                         {sha256_with_rsa, "1.2.3"},
                                         {sha256_with_rsa, ec},
                                         {sha256_with_rsa, rsa}, // bits that are no key
                                         {long_oid(255), rsa}}) {
        EXPECT_FALSE(verify(signature, key)) << signature << " with " << key;
    }
}

TEST(VerifySignature, FailsWithTheErrorOfTheText) {
    EXPECT_EQ(error_of([] { return verify(sha256_with_rsa, rsa, {}); }).type, "Asn1Exception");
    const Error invalid{"Asn1DecodeException", "Invalid ASN1T_AlgorithmIdentifier", "ASN1Util"};
    EXPECT_EQ(error_of([] { return verify(long_oid(256), rsa); }), invalid);
    EXPECT_EQ(error_of([] { return verify(sha256_with_rsa, long_oid(256)); }), invalid);
}

TEST(VerifySignature, TurnsSignaturesOfAnyCountOfBits) {
    const Bytes octets = {1, 2, 3, 4, 5};
    for (const auto& [bits, size] : {std::pair(40U, 5), {13U, 2}, {8U, 1}, {0U, 0}}) {
        CACMPT_BLOB reversed;
        reverse_signature(reversed, {bits, octets.data()});
        EXPECT_EQ(Bytes(reversed.data, reversed.data + reversed.length),
                  Bytes(octets.rend() - size, octets.rend()));
    }
    const Error error = error_of([&] {
        CACMPT_BLOB out;
        reverse_signature(out, {0xFFFFFFF9U, octets.data()}); // Rounding up overflows.
        return 0;
    });
    EXPECT_EQ(error, (Error{"CAException", "signature too long", "EncodeAnd"}));
}

} // namespace norvane
