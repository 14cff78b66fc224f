#include "CryptoObjects.h"
#include "StoreMaterial.h"

#include <thread>

namespace {

using namespace norvane::testing;

const Bytes message = text_bytes("to be signed");

/// The public key of a pair, by way of a certificate.
OwnedKey import_from(HCRYPTPROV provider, const Key& pair) {
    const CertificateContext certificate =
        certificate_context(CertificateBuilder{.spki = pair.spki()}.sign(Key::ec(0)));
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
const KnownAnswer known_answers[] = {
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

} // namespace

TEST(Signatures, VerifyInReverseOrderOnly) {
    const OwnedProvider provider = open_provider();
    const OwnedProvider gost = open_provider(PROV_NORVANE_GOST);
    for (const Key& pair : {Key::rsa(0), Key::ec(0)}) {
        const OwnedKey key = import_from(provider, pair);
        const Bytes signature = pair.sign(message);
        const OwnedHash hash = hash_of(provider, CALG_SHA_256, message);
        EXPECT_EQ(verify(hash, signature, key), ERROR_SUCCESS);
        const Bytes shorter(signature.begin(), signature.end() - 1);
        for (const Bytes& bad : {reversed(signature), shorter, cat(signature, Bytes{0}),
                                 cat(Bytes{0}, signature), Bytes{}, Bytes(1 << 20)}) {
            EXPECT_EQ(verify(hash, bad, key), NTE_BAD_SIGNATURE) << bad.size();
        }
        EXPECT_EQ(verify(hash, signature, key), ERROR_SUCCESS) << "a finished hash stays of use";
        EXPECT_EQ(CryptHashData(hash, message.data(), 1, 0), FALSE) << "but takes no more";
        EXPECT_EQ(verify(hash_of(provider, CALG_SHA_384, message), signature, key),
                  NTE_BAD_SIGNATURE);
        EXPECT_EQ(verify(hash_of(gost, CALG_NORVANE_GOST_R3411_94, message), signature, key),
                  NTE_BAD_KEY);
    }
}

TEST(Signatures, OfGostGoWithTheirOwnHashOnly) {
    const OwnedProvider provider = open_provider(PROV_NORVANE_GOST);
    for (const KnownAnswer& known : known_answers) {
        SCOPED_TRACE(known.set);
        const OwnedKey key = known.parts().import_into(provider);
        const Bytes signature = hex(known.signature);
        const OwnedHash hash = hash_of(provider, known.hash, text_bytes("abc"));
        EXPECT_EQ(verify(hash, signature, key), ERROR_SUCCESS);
        const auto middle = signature.begin() + static_cast<std::ptrdiff_t>(signature.size() / 2);
        const Bytes first(signature.begin(), middle);
        const Bytes second(middle, signature.end());
        const Bytes zeros(first.size());
        const Bytes ones(first.size(), 0xFF);
        for (const Bytes& bad : {cat(second, first), cat(zeros, second), cat(first, zeros),
                                 cat(ones, second), cat(first, ones), cat(Bytes{0}, signature)}) {
            EXPECT_EQ(verify(hash, bad, key), NTE_BAD_SIGNATURE);
        }
        EXPECT_EQ(verify(hash_of(provider, CALG_NORVANE_GOST_R3411_2012_256, {}), signature, key),
                  NTE_BAD_ALGID);
    }
}

TEST(Signatures, VerifyWithTheirKeysWhateverWasImportedMeanwhile) {
    const OwnedProvider provider = open_provider();
    const Bytes signatures[] = {Key::rsa(0).sign(message), Key::rsa(1).sign(message)};
    const OwnedHash hash = hash_of(provider, CALG_SHA_256, message);
    const OwnedKey kept = import_from(provider, Key::rsa(0));
    const auto check = [&] {
        for (const std::size_t index : {0U, 1U}) {
            const OwnedKey key = import_from(provider, Key::rsa(index));
            EXPECT_EQ(verify(hash, signatures[index], key), ERROR_SUCCESS);
            EXPECT_EQ(verify(hash, signatures[1 - index], key), NTE_BAD_SIGNATURE);
        }
    };
    check();
    // More keys than are remembered.
    for (std::uint32_t i = 0; i < 5000; ++i) {
        Bytes modulus(130, 0x7F);
        modulus[0] = 0;
        modulus[1] = 0xFF;
        modulus[60] = static_cast<std::uint8_t>(i);
        modulus[61] = static_cast<std::uint8_t>(i >> 8);
        const KeyParts parts{"1.2.840.113549.1.1.1", null(),
                             sequence(integer_octets(modulus), integer(3))};
        ASSERT_NE(parts.import_into(provider), 0U);
    }
    check();
    EXPECT_EQ(verify(hash, signatures[0], kept), ERROR_SUCCESS) << "a handle keeps its key";
}

TEST(Signatures, VerifyInManyThreadsAtOnce) {
    const OwnedProvider shared = open_provider();
    const Bytes signature = Key::rsa(0).sign(message);
    const OwnedKey shared_key = import_from(shared, Key::rsa(0));
    const OwnedHash shared_hash = hash_of(shared, CALG_SHA_256, message);
    const auto work = [&] {
        for (int i = 0; i < 50; ++i) {
            const OwnedProvider own = open_provider();
            const OwnedHash hash = hash_of(own, CALG_SHA_256, message);
            EXPECT_EQ(verify(hash, signature, import_from(own, Key::rsa(0))), ERROR_SUCCESS);
            EXPECT_EQ(verify(shared_hash, signature, shared_key), ERROR_SUCCESS);
            EXPECT_NE(CryptContextAddRef(shared, nullptr, 0), FALSE);
            EXPECT_NE(CryptReleaseContext(shared, 0), FALSE);
        }
        const KnownAnswer& known = known_answers[1];
        const OwnedProvider gost = open_provider(PROV_NORVANE_GOST);
        EXPECT_EQ(verify(hash_of(gost, known.hash, text_bytes("abc")), hex(known.signature),
                         known.parts().import_into(gost)),
                  ERROR_SUCCESS);
    };
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back(work);
    }
}
