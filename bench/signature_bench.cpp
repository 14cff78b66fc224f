#include "Material.h"
#include "Rate.h"
#include "SideBySide.h"
#include "items/CertificateItem.h"

#include <botan/auto_rng.h>
#include <botan/ec_group.h>
#include <botan/gost_3410.h>
#include <botan/pubkey.h>

#include <openssl/x509.h>

#include <memory>
#include <stdexcept>

namespace norvane::bench {
namespace {

using testing::CertificateBuilder;
using testing::Key;

void require(bool good) {
    if (!good) {
        throw std::runtime_error("a good signature does not verify");
    }
}

/// A self-signed certificate, decoded, that verifies through the platform's providers.
class Subject {
  public:
    explicit Subject(const Bytes& certificate)
        : item_(CACMPT_BLOB(certificate.data(), static_cast<std::uint32_t>(certificate.size()))) {
        verify();
    }

    void verify() const {
        require(item_.verify_with_key(tree().tbsCertificate.subjectPublicKeyInfo));
    }
    [[nodiscard]] const ASN1T_Certificate& tree() const { return *item_.decoded(); }
    [[nodiscard]] ByteView tbs() const { return tree().tbsCertificate.encoding; }
    [[nodiscard]] ByteView signature() const { return tree().signature.octets(); }

  private:
    CertificateItem item_;
};

/// A certificate of typical size, signed with RSA-2048 and SHA-256.
const Subject& rsa_subject() {
    static const Subject subject(typical_certificate());
    return subject;
}

struct GostPair {
    Botan::AutoSeeded_RNG random;
    Botan::GOST_3410_PrivateKey key{random, Botan::EC_Group(std::string("1.2.643.2.2.35.1"))};
};
GostPair& gost_pair() {
    static GostPair pair;
    return pair;
}
constexpr const char* gost_padding = "EMSA1(Streebog-256)";

/// A certificate of the same kind with GOST R 34.10-2012 in 256 bits.
const Subject& gost_subject() {
    static const Subject subject([] {
        using namespace testing;
        GostPair& pair = gost_pair();
        const Bytes algorithm = sequence(oid("1.2.643.7.1.1.3.2"));
        const Bytes spki =
            sequence(sequence(oid("1.2.643.7.1.1.1.1"), sequence(oid("1.2.643.2.2.35.1"))),
                     bit_string(Bytes(pair.key.public_key_bits())));
        const Bytes tbs =
            CertificateBuilder{
                .spki = spki,
                .extensions = {extension("1.3.6.1.4.1.11129.2.4.2", Critical::no,
                                         octet_string(Bytes(900, 0x17)))},
            }
                .tbs(algorithm);
        Botan::PK_Signer signer(pair.key, pair.random, gost_padding);
        return sequence(tbs, algorithm, bit_string(signer.sign_message(tbs, pair.random)));
    }());
    return subject;
}

/// The bare verification of the same signature by libcrypto, with the key imported and used before.
class BareRsa {
  public:
    void verify() const {
        const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> digest(EVP_MD_CTX_new(),
                                                                             EVP_MD_CTX_free);
        const ByteView signature = rsa_subject().signature();
        const ByteView tbs = rsa_subject().tbs();
        require(EVP_DigestVerifyInit(digest.get(), nullptr, EVP_sha256(), nullptr, key_.get()) ==
                    1 &&
                EVP_DigestVerify(digest.get(), signature.data, signature.length, tbs.data,
                                 tbs.length) == 1);
    }

  private:
    static EVP_PKEY* import() {
        const Bytes spki = Key::rsa(0).spki();
        const unsigned char* at = spki.data();
        return d2i_PUBKEY(nullptr, &at, static_cast<long>(spki.size()));
    }

    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_{import(), EVP_PKEY_free};
};

/// The bare verification by Botan, with a verifier made once. A verifier serves one thread.
class BareGost {
  public:
    void verify() {
        const ByteView signature = gost_subject().signature();
        const ByteView tbs = gost_subject().tbs();
        require(verifier_.verify_message(tbs.data, tbs.length, signature.data, signature.length));
    }

  private:
    Botan::GOST_3410_PublicKey key_{gost_pair().key.domain(), gost_pair().key.public_point()};
    Botan::PK_Verifier verifier_{key_, gost_padding};
};

void rsa_certificate_verification(benchmark::State& state) {
    const BareRsa bare;
    side_by_side(
        state, 1.25, 100, [] { rsa_subject().verify(); }, [&] { bare.verify(); });
}
BENCHMARK(rsa_certificate_verification)
    ->UseManualTime()
    ->Iterations(200)
    ->Unit(benchmark::kMicrosecond);

void gost_certificate_verification(benchmark::State& state) {
    BareGost bare;
    side_by_side(
        state, 1.25, 10, [] { gost_subject().verify(); }, [&] { bare.verify(); });
}
BENCHMARK(gost_certificate_verification)
    ->UseManualTime()
    ->Iterations(100)
    ->Unit(benchmark::kMicrosecond);

/// The rate of two threads that verify the same certificate, which should be `wanted` or more, and
/// in turn that of two threads with the bare library: what the machine and the library give. Each
/// thread has an item of its own, since an item belongs to one thread.
template <class MakeBare>
void two_threads(benchmark::State& state, const Subject& subject, int repeat, MakeBare make_bare) {
    constexpr double wanted = 1.9;
    Rate ours(repeat);
    Rate bare(repeat);
    for ([[maybe_unused]] auto iteration : state) {
        state.SetIterationTime(bare.measure(make_bare) +
                               ours.measure([&] { return [own = subject] { own.verify(); }; }));
    }
    state.counters["rate"] = ours.rate();
    state.counters["reference_rate"] = bare.rate();
    state.counters["wanted"] = wanted;
}

void rsa_in_two_threads(benchmark::State& state) {
    const BareRsa bare;
    two_threads(state, rsa_subject(), 2000, [&] { return [&] { bare.verify(); }; });
}
BENCHMARK(rsa_in_two_threads)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

void gost_in_two_threads(benchmark::State& state) {
    two_threads(state, gost_subject(), 100,
                [] { return [bare = std::make_unique<BareGost>()] { bare->verify(); }; });
}
BENCHMARK(gost_in_two_threads)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace norvane::bench
