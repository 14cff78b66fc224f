#include "platform/crypto/LibcryptoProvider.h"

#include "platform/LazyObject.h"
#include "platform/crypto/Libcrypto.h"
#include "platform/crypto/LibcryptoKeys.h"

#include <algorithm>
#include <array>

#include <openssl/provider.h>

namespace norvane {
namespace {

constexpr Algorithm offered[] = {
    {CALG_SHA1, 160, 160, 160, "SHA-1", "Secure Hash Algorithm 1"},
    {CALG_SHA_256, 256, 256, 256, "SHA-256", "Secure Hash Algorithm 2, 256 bits"},
    {CALG_SHA_384, 384, 384, 384, "SHA-384", "Secure Hash Algorithm 2, 384 bits"},
    {CALG_SHA_512, 512, 512, 512, "SHA-512", "Secure Hash Algorithm 2, 512 bits"},
    {CALG_RSA_SIGN, 2048, min_rsa_bits, max_rsa_bits, "RSA_SIGN", "RSA Signature"},
    // No key is exchanged. The first entry of RSA keys in the table of identifiers has this number,
    // and whoever looks for their provider goes by it.
    {CALG_RSA_KEYX, 2048, min_rsa_bits, max_rsa_bits, "RSA_KEYX", "RSA Key Exchange"},
    {CALG_DSS_SIGN, 2048, min_dsa_bits, max_dsa_bits, "DSA_SIGN", "Digital Signature Algorithm"},
    {CALG_ECDSA, 256, 160, 521, "ECDSA", "Elliptic Curve DSA"},
};

struct DigestName {
    ALG_ID algorithm;
    const char* name;
};

constexpr std::array digest_names{
    DigestName{CALG_SHA1, "SHA1"},
    DigestName{CALG_SHA_256, "SHA256"},
    DigestName{CALG_SHA_384, "SHA384"},
    DigestName{CALG_SHA_512, "SHA512"},
};
constexpr std::size_t no_digest = digest_names.size();

std::size_t digest_index(ALG_ID algorithm) noexcept {
    const auto* const found = std::ranges::find(digest_names, algorithm, &DigestName::algorithm);
    return static_cast<std::size_t>(found - digest_names.begin());
}

/// The library context of the provider, with the digests looked up: whatever looks for algorithms
/// takes locks of libcrypto, which a child of fork would find held.
struct Library {
    OSSL_LIB_CTX* context;
    std::array<EVP_MD*, digest_names.size()> digests{};

    Library() : context(require(OSSL_LIB_CTX_new(), "OSSL_LIB_CTX_new")) {
        static_cast<void>(require(OSSL_PROVIDER_load(context, "default"), "OSSL_PROVIDER_load"));
        for (std::size_t i = 0; i < digests.size(); ++i) {
            digests[i] =
                require(EVP_MD_fetch(context, digest_names[i].name, nullptr), "EVP_MD_fetch");
        }
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() {
        std::ranges::for_each(digests, EVP_MD_free);
        OSSL_LIB_CTX_free(context);
    }
};

class LibcryptoHash final : public Hash {
  public:
    explicit LibcryptoHash(const EVP_MD* digest)
        : context_(require(EVP_MD_CTX_new(), "EVP_MD_CTX_new")) {
        require(EVP_DigestInit_ex2(context_.get(), digest, nullptr), "EVP_DigestInit_ex2");
    }

    void update(Octets bytes) override {
        require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()), "EVP_DigestUpdate");
    }

    Digest finish() override {
        Digest digest;
        unsigned size = 0;
        require(EVP_DigestFinal_ex(context_.get(), digest.octets.data(), &size),
                "EVP_DigestFinal_ex");
        digest.size = size;
        return digest;
    }

  private:
    DigestContext context_;
};

class LibcryptoProvider final : public Provider {
  public:
    [[nodiscard]] std::span<const Algorithm> algorithms() const override { return offered; }

    [[nodiscard]] std::unique_ptr<Hash> create_hash(ALG_ID algorithm) const override {
        const std::size_t index = digest_index(algorithm);
        if (index == no_digest) {
            return nullptr;
        }
        const ErrorQueueGuard guard;
        return std::make_unique<LibcryptoHash>(library_.digests[index]);
    }

    [[nodiscard]] std::shared_ptr<const PublicKey> import_key(ALG_ID algorithm, Octets parameters,
                                                              Octets key) const override {
        const ErrorQueueGuard guard;
        switch (algorithm) {
        case CALG_RSA_SIGN:
            return import_rsa_key(parameters, key);
        case CALG_DSS_SIGN:
            return import_dsa_key(parameters, key);
        case CALG_ECDSA:
            return import_ecdsa_key(library_.context, parameters, key);
        default:
            return nullptr;
        }
    }

  private:
    Library library_;
};

constinit LazyObject<const LibcryptoProvider> provider;

} // namespace

const Provider& libcrypto_provider() {
    return provider.get([] { return std::make_unique<const LibcryptoProvider>(); });
}

} // namespace norvane
