// One import and one verification of each algorithm, for each allocation in it that can fail.
#include "platform/SignatureMaterial.h"
#include "sweep/Faults.h"

#include <openssl/dsa.h>
#include <openssl/x509.h>
#include <sys/wait.h>

namespace norvane::testing {
namespace {

struct Signed {
    std::string what;
    DWORD provider_type;
    ALG_ID hash;
    Bytes spki;
    Bytes message;
    Bytes signature;
};

// A pair that libcrypto has made, which this frees.
Signed signed_with(const std::string& what, EVP_PKEY* made) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> pair(made, EVP_PKEY_free);
    const Bytes message = text_bytes("abc");
    Bytes spki(static_cast<std::size_t>(i2d_PUBKEY(pair.get(), nullptr)));
    auto* out = spki.data();
    i2d_PUBKEY(pair.get(), &out);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                          EVP_MD_CTX_free);
    EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, pair.get());
    std::size_t size = 0;
    EVP_DigestSign(context.get(), nullptr, &size, message.data(), message.size());
    Bytes signature(size);
    EVP_DigestSign(context.get(), signature.data(), &size, message.data(), message.size());
    signature.resize(size);
    return {what, PROV_RSA_FULL, CALG_SHA_256, spki, message, signature};
}

EVP_PKEY* dsa_pair() {
    EVP_PKEY_CTX* context = EVP_PKEY_CTX_new_from_name(nullptr, "DSA", nullptr);
    EVP_PKEY* parameters = nullptr;
    EVP_PKEY_paramgen_init(context);
    EVP_PKEY_CTX_set_dsa_paramgen_bits(context, 1024);
    EVP_PKEY_CTX_set_dsa_paramgen_q_bits(context, 160);
    EVP_PKEY_paramgen(context, &parameters);
    EVP_PKEY_CTX_free(context);
    context = EVP_PKEY_CTX_new_from_pkey(nullptr, parameters, nullptr);
    EVP_PKEY* pair = nullptr;
    EVP_PKEY_keygen_init(context);
    EVP_PKEY_keygen(context, &pair);
    EVP_PKEY_CTX_free(context);
    EVP_PKEY_free(parameters);
    return pair;
}

std::vector<Signed> material() {
    std::vector<Signed> all{signed_with("RSA", EVP_RSA_gen(2048)), signed_with("DSA", dsa_pair())};
    for (const char* const curve : {"P-256", "P-521", "brainpoolP256t1"}) {
        all.push_back(signed_with(curve, EVP_EC_gen(curve)));
    }
    for (const KnownAnswer& known : known_answers) {
        const KeyParts parts = known.parts();
        all.push_back(
            {known.set, PROV_NORVANE_GOST, known.hash,
             sequence(sequence(oid(parts.algorithm), parts.parameters), bit_string(parts.key)),
             text_bytes("abc"), hex(known.signature)});
    }
    return all;
}

enum Outcome { good, bad, failed, other };

Outcome outcome_of(DWORD error) {
    switch (error) {
    case ERROR_SUCCESS:
        return good;
    case NTE_BAD_SIGNATURE:
        return bad;
    case NTE_NO_MEMORY:
    case NTE_FAIL:
    case NTE_PROVIDER_DLL_FAIL:
        return failed;
    default:
        return other;
    }
}

// What importing the key and verifying the signature ends with.
Outcome verify_once(HCRYPTPROV provider, const CERT_CONTEXT& certificate, const Signed& material,
                    const Bytes& turned) {
    HCRYPTKEY key = 0;
    HCRYPTHASH hash = 0;
    PCERT_PUBLIC_KEY_INFO info = &certificate.pCertInfo->SubjectPublicKeyInfo;
    const auto size = [](const Bytes& bytes) { return static_cast<DWORD>(bytes.size()); };
    return CryptImportPublicKeyInfoEx(provider, X509_ASN_ENCODING, info, 0, 0, nullptr, &key) &&
                   CryptCreateHash(provider, material.hash, 0, 0, &hash) &&
                   CryptHashData(hash, material.message.data(), size(material.message), 0) &&
                   CryptVerifySignatureW(hash, turned.data(), size(turned), key, nullptr, 0)
               ? good
               : outcome_of(GetLastError());
}

// The same in a process of its own, where the key is new, with the n-th allocation failing; and
// whether there was an n-th.
std::pair<Outcome, bool> verify_with_fault(HCRYPTPROV provider, const CERT_CONTEXT& certificate,
                                           const Signed& material, const Bytes& turned, long n) {
    const pid_t child = fork();
    if (child == 0) {
        arm_fault(FaultKind::allocation, n);
        const Outcome outcome = verify_once(provider, certificate, material, turned);
        _exit(outcome * 2 + (disarm_fault() >= n));
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status)) {
        return {other, true};
    }
    return {static_cast<Outcome>(WEXITSTATUS(status) / 2), WEXITSTATUS(status) % 2 != 0};
}

TEST(SignatureFaults, NoFailingAllocationReadsAsTheOtherAnswer) {
    for (const Signed& each : material()) {
        const OwnedProvider provider = open_provider(each.provider_type);
        // What the library loads, looks up or computes once it has before the first fault: for a
        // hash, and for what a key that is none has in common with this one.
        static_cast<void>(hash_of(provider, each.hash, each.message));
        Bytes changed = each.spki;
        changed.back() ^= 1;
        static_cast<void>(import_from(provider, changed));
        const CertificateContext certificate =
            certificate_context(CertificateBuilder{.spki = each.spki}.sign(Key::ec(0)));
        for (const Outcome right : {good, bad}) {
            Bytes turned = reversed(each.signature);
            turned[turned.size() / 4] ^= right == bad ? 1 : 0;
            for (long n = 1;; ++n) {
                const auto [outcome, had_fault] =
                    verify_with_fault(provider, *certificate, each, turned, n);
                ASSERT_TRUE(outcome == right || (had_fault && outcome == failed))
                    << each.what << ": answer " << right << " turns into " << outcome
                    << " at allocation " << n;
                if (!had_fault) {
                    EXPECT_GT(n, 5) << each.what;
                    break;
                }
            }
        }
    }
}

} // namespace
} // namespace norvane::testing
