#include "SignatureMaterial.h"

#include <thread>

namespace {

using namespace norvane::testing;

const Bytes message = text_bytes("to be signed");

} // namespace

TEST(Signatures, VerifyInReverseOrderOnly) {
    const OwnedProvider provider = open_provider();
    const OwnedProvider gost = open_provider(PROV_NORVANE_GOST);
    for (const Key& pair : {Key::rsa(0), Key::ec(0)}) {
        const OwnedKey key = import_from(provider, pair.spki());
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
    const OwnedKey kept = import_from(provider, Key::rsa(0).spki());
    const auto check = [&] {
        for (const std::size_t index : {0U, 1U}) {
            const OwnedKey key = import_from(provider, Key::rsa(index).spki());
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
    const OwnedKey shared_key = import_from(shared, Key::rsa(0).spki());
    const OwnedHash shared_hash = hash_of(shared, CALG_SHA_256, message);
    const auto work = [&] {
        for (int i = 0; i < 50; ++i) {
            const OwnedProvider own = open_provider();
            const OwnedHash hash = hash_of(own, CALG_SHA_256, message);
            EXPECT_EQ(verify(hash, signature, import_from(own, Key::rsa(0).spki())), ERROR_SUCCESS);
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
