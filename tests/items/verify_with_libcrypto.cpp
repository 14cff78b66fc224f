// verify_with_key of the items by libcrypto, so that these tests need no signature code of the
// project's.
#include "Material.h"

#include "values/EncodeValue.h"

#include <memory>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace norvane {
namespace {

unsigned verifications = 0;

Bytes copied(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

bool verify(const CACMPT_BLOB& tbs, const ASN1TBitStr& signature,
            const ASN1T_SubjectPublicKeyInfo& key) {
    ++verifications;
    const Bytes algorithm =
        testing::sequence(testing::tlv(0x06, copied(key.algorithm.algorithm.content())),
                          copied(key.algorithm.parameters));
    const Bytes encoded =
        testing::sequence(algorithm, testing::bit_string(copied(key.subjectPublicKey.octets())));
    const std::uint8_t* at = encoded.data();
    const std::shared_ptr<EVP_PKEY> public_key(
        d2i_PUBKEY(nullptr, &at, static_cast<long>(encoded.size())), EVP_PKEY_free);
    const std::shared_ptr<EVP_MD_CTX> digest(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    const ByteView octets = signature.octets();
    return public_key != nullptr &&
           EVP_DigestVerifyInit(digest.get(), nullptr, EVP_sha256(), nullptr, public_key.get()) ==
               1 &&
           EVP_DigestVerify(digest.get(), octets.data, octets.length, tbs.data, tbs.length) == 1;
}

} // namespace

unsigned verification_count() { return verifications; }

bool CertificateItem::verify_with_key(const ASN1T_SubjectPublicKeyInfo& key) const {
    ASN1T_TBSCertificate tbs = decoded()->tbsCertificate;
    return verify(encode_value(tbs, "", 0), decoded()->signature, key);
}

bool CRLItem::verify_with_key(const ASN1T_SubjectPublicKeyInfo& key) const {
    ASN1T_TBSCertList tbs = decoded()->tbsCertList;
    return verify(encode_value(tbs, "", 0), decoded()->signature, key);
}

} // namespace norvane
