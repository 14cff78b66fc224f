// Costs that are counted.
#include "asn1/Decoded.h"
#include "asn1/Material.h"
#include "support/AllocationCounter.h"

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

template <class T>
std::size_t allocations_of_decoding(const Bytes& bytes) {
    ASN1BERDecodeBuffer buffer(bytes.data(), view(bytes).length);
    T value;
    const AllocationCounter counter;
    const int status = ASN1C<T>(buffer, value).DecodeFrom(buffer);
    const std::size_t count = counter.count();
    EXPECT_EQ(status, 0);
    return count;
}

TEST(Allocations, AreFewForACertificateAndNoneForAnEntry) {
    EXPECT_LE(allocations_of_decoding<ASN1T_Certificate>(typical_certificate()), 20);

    const Bytes large = large_crl(10000, Key::ec(0));
    EXPECT_EQ(allocations_of_decoding<ASN1T_CertificateList>(large),
              allocations_of_decoding<ASN1T_CertificateList>(large_crl(10, Key::ec(0))));
    Decoded<ASN1T_CertificateList> list(large);
    ASN1BEREncodeBuffer out;
    const AllocationCounter counter;
    int keys_compromised = 0;
    for (const ASN1T_RevokedCertificate& entry : list.value.tbsCertList.revokedCertificates) {
        for (const ASN1T_Extension& extension : entry.crlEntryExtensions) {
            keys_compromised += std::get<ASN1T_CRLReason>(extension.value).value == 1 ? 1 : 0;
        }
    }
    EXPECT_GT(ASN1C_TBSCertList(out, list.value.tbsCertList).EncodeTo(out), 490000);
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(keys_compromised, 2000);
}

TEST(Allocations, AreLinearForBadInput) {
    // Names whose elements fail at first, later or all, with lengths as they should be or not.
    for (const Bytes& part : {hex("31023000"), hex("3100"), hex("0500"), hex("310430800000"),
                              cat(rdn({{"2.5.4.3", null()}}), set(null()))}) {
        for (const Bytes& front : {Bytes{}, hex("31020500"), hex("31800000")}) {
            Bytes parts = front;
            for (int i = 0; i < 5000; ++i) {
                append(parts, part);
            }
            const Bytes bytes = sequence(parts);
            ASN1BERDecodeBuffer buffer(bytes.data(), view(bytes).length);
            ASN1T_Name name;
            const AllocationCounter counter;
            static_cast<void>(ASN1C_Name(buffer, name).DecodeFrom(buffer));
            EXPECT_LE(counter.bytes(), 100 * bytes.size() + 10000);
        }
    }
}

} // namespace
} // namespace norvane::testing
