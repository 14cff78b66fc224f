// What keeps a decoded structure alive, of which the address sanitizer is the judge, and how much
// memory a decoding takes.
#include "asn1/Decoded.h"
#include "asn1/Material.h"
#include "asn1/TreeText.h"
#include "support/AllocationCounter.h"

#include <memory>

#include <gtest/gtest.h>

namespace norvane::testing {
namespace {

TEST(Lifetime, ShallowCopiesOfPartsKeepTheirContextWhenABufferIsArmedAnew) {
    // The lengths are rewritten, so that all the views lie in the memory of the context.
    auto certificate =
        std::make_unique<Decoded<ASN1T_Certificate>>(to_indefinite(full_certificate()));
    auto tbs = std::make_unique<ASN1T_TBSCertificate>(certificate->value.tbsCertificate);
    const ASN1T_Name issuer = tbs->issuer;
    const std::string text = tree_text(*tbs);
    const Bytes second = to_indefinite(common_name("second"));
    certificate->buffer.setBuffer(second.data(), view(second).length);
    ASN1T_Name name;
    ASSERT_EQ(ASN1C_Name(certificate->buffer, name).DecodeFrom(certificate->buffer), 0);
    certificate.reset();
    EXPECT_EQ(tree_text(*tbs), text);
    tbs.reset();
    EXPECT_EQ(tree_text(issuer), tree_text(Decoded<ASN1T_Name>(varied_name()).value));
    EXPECT_EQ(tree_text(name), tree_text(Decoded<ASN1T_Name>(second).value));
}

template <class T>
std::size_t allocations_of_decoding(const Bytes& bytes) {
    ASN1BERDecodeBuffer buffer(bytes.data(), view(bytes).length);
    T value;
    const AllocationCounter counter;
    EXPECT_EQ(ASN1C<T>(buffer, value).DecodeFrom(buffer), 0);
    return counter.count();
}

TEST(Allocations, AreNoneForAnEntryOfACrl) {
    const Bytes large = large_crl(10000, Key::ec(0));
    EXPECT_EQ(allocations_of_decoding<ASN1T_CertificateList>(large),
              allocations_of_decoding<ASN1T_CertificateList>(large_crl(10, Key::ec(0))));
    Decoded<ASN1T_CertificateList> list(large);
    const AllocationCounter counter;
    int keys_compromised = 0;
    for (const ASN1T_RevokedCertificate& entry : list.value.tbsCertList.revokedCertificates) {
        for (const ASN1T_Extension& extension : entry.crlEntryExtensions) {
            keys_compromised += std::get<ASN1T_CRLReason>(extension.value).value == 1 ? 1 : 0;
        }
    }
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(keys_compromised, 2000);
}

TEST(Allocations, AreLinearForBadInput) {
    // Names whose elements fail at first, later or all, with lengths as they should be or not.
    for (const Bytes& part : {hex("31023000"), hex("3100"), hex("310430800000"),
                              cat(rdn({{"2.5.4.3", null()}}), set(null()))}) {
        for (const Bytes& front : {Bytes{}, hex("31020500"), hex("31800000")}) {
            const Bytes bytes = sequence(front, std::vector<Bytes>(5000, part));
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
