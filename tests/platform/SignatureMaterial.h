// Keys and signatures for the tests of providers.
#pragma once

#include "platform/CryptoObjects.h"
#include "platform/StoreMaterial.h"

namespace norvane::testing {

// A public key by its SubjectPublicKeyInfo, by way of a certificate.
[[nodiscard]] inline OwnedKey import_from(HCRYPTPROV provider, const Bytes& spki) {
    const CertificateContext certificate =
        certificate_context(CertificateBuilder{.spki = spki}.sign(Key::ec(0)));
    HCRYPTKEY imported = 0;
    EXPECT_TRUE(CryptImportPublicKeyInfoEx(provider, X509_ASN_ENCODING,
                                           &certificate->pCertInfo->SubjectPublicKeyInfo, 0, 0,
                                           nullptr, &imported));
    return OwnedKey(imported);
}

struct KnownAnswer {
    const char* algorithm;
    const char* set;
    ALG_ID hash;
    const char* key;
    const char* signature;

    [[nodiscard]] KeyParts parts() const {
        return {algorithm, sequence(oid(set)), octet_string(hex(key))};
    }
};

// Signatures of "abc", computed apart from any library but for the hash. They stand for what the
// openssl command cannot make.
inline const KnownAnswer known_answers[] = {
    {"1.2.643.2.2.20", "1.2.643.2.2.32.2", CALG_NORVANE_GOST_R3411_94,
     "b7e1b305262e27f9dce10f2ed174004414da4b4247f8616d0d171ea13f317be8d37c62607dd84644"
     "2554fcf0ddb9c43b1d054b3d8dec33f2044dd0d23f8cff742a23436f130061d9766e610113b75389"
     "e223c72b6a3f551420d35e215f92ad8a36f88c9688bcf16a2eee821ce796e9b7963d35bd99ab0f66"
     "f0c5f0c133c736ac",
     "4f38fad2362cc4c1175349978b5568ed8caaa2dfe4fcfe262727fc8c591506553f32aadde459f924"
     "72d1b87bfb097462dcd0822bba814f287af0339311fc0078"},
    {"1.2.643.7.1.1.1.2", "1.2.643.7.1.2.1.2.0", CALG_NORVANE_GOST_R3411_2012_512,
     "e1ef30d52c6133ddd99d1d5c41455cf7df4d8b4c925bbc69af1433d15658515add2146850c325c5b"
     "81c133be655aa8c4d440e7b98a8d59487b0c7696bcc55d11ecbe7736a9ec357ff2fd39931f4e114c"
     "b8cda359270ac7f0e7ff43d9419419ea61fd2ab77f5d9f63523d3b50a04f63e2a0cf51b7c13adc21"
     "560f0bd40cc9c737",
     "0cdc8c93bc07acb8690df89e9a2891a7d12694e79e2d337c836da052e9d3b98faab3458687dc356b"
     "552aff39bf1dec7bf51a5d391bcd414a1bf8c3b7829b574c0afea4c66879d1d14ed15149ab8fe87f"
     "bec4d0bdb1c505257b06e73ab7fb08564cb124498c8b8b616eaf6c5508630a26409e12d388740ada"
     "f17c013d2ef02c72"},
};

} // namespace norvane::testing
