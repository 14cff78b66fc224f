#include "platform/crypto/LibcryptoProvider.h"

#include "platform/ForkLocks.h"
#include "platform/LazyObject.h"
#include "platform/crypto/Libcrypto.h"
#include "platform/crypto/LibcryptoKeys.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

#include <openssl/provider.h>
#include <openssl/rsa.h>

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

/// One of them is held while libcrypto looks for algorithms. It does that under locks of its
/// library context, which fork would leave to a child as they are; so fork takes all of these.
/// There are several, so that threads seldom wait for each other.
constinit std::array<std::mutex, 4> lookup_locks;

std::unique_lock<std::mutex> lock_for_lookup() {
    const std::size_t thread = std::hash<std::thread::id>()(std::this_thread::get_id());
    return std::unique_lock(lookup_locks[thread % lookup_locks.size()]);
}

/// The library context of the provider, with the digests looked up.
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

/// A key of libcrypto. To prepare a verification costs a quarter of an RSA verification, to copy a
/// prepared one next to nothing; so one is kept for each hash that has been used.
class LibcryptoKey final : public PublicKey {
  public:
    LibcryptoKey(const Library& library, ALG_ID algorithm, KeyPointer key)
        : library_(library), algorithm_(algorithm), key_(std::move(key)) {}
    LibcryptoKey(const LibcryptoKey&) = delete;
    LibcryptoKey& operator=(const LibcryptoKey&) = delete;
    ~LibcryptoKey() override {
        for (auto& prepared : prepared_) {
            EVP_PKEY_CTX_free(prepared);
        }
    }

    Verdict verify(ALG_ID hash, Octets digest, Octets signature) const override {
        const ErrorQueueGuard guard;
        const std::size_t index = digest_index(hash);
        if (index == no_digest) {
            return Verdict::wrong_hash;
        }
        const KeyContext context(require(EVP_PKEY_CTX_dup(prepared(index)), "EVP_PKEY_CTX_dup"));
        // Malformed signatures are told by negative values.
        const int result = EVP_PKEY_verify(context.get(), signature.data(), signature.size(),
                                           digest.data(), digest.size());
        return result == 1 ? Verdict::good : Verdict::bad;
    }

  private:
    const EVP_PKEY_CTX* prepared(std::size_t index) const {
        std::atomic<EVP_PKEY_CTX*>& place = prepared_[index];
        if (EVP_PKEY_CTX* const present = place.load(std::memory_order_acquire)) {
            return present;
        }
        KeyContext made = prepare(library_.digests[index]);
        EVP_PKEY_CTX* present = nullptr;
        return place.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)
                   ? made.release()
                   : present;
    }

    KeyContext prepare(const EVP_MD* digest) const {
        const auto lock = lock_for_lookup();
        KeyContext context(
            require(EVP_PKEY_CTX_new_from_pkey(library_.context, key_.get(), nullptr),
                    "EVP_PKEY_CTX_new_from_pkey"));
        require(EVP_PKEY_verify_init(context.get()), "EVP_PKEY_verify_init");
        if (algorithm_ == CALG_RSA_SIGN) {
            require(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING),
                    "EVP_PKEY_CTX_set_rsa_padding");
        }
        require(EVP_PKEY_CTX_set_signature_md(context.get(), digest),
                "EVP_PKEY_CTX_set_signature_md");
        return context;
    }

    const Library& library_;
    ALG_ID algorithm_;
    KeyPointer key_;
    mutable std::array<std::atomic<EVP_PKEY_CTX*>, digest_names.size()> prepared_{};
};

class LibcryptoProvider final : public Provider {
  public:
    [[nodiscard]] std::span<const Algorithm> algorithms() const noexcept override {
        return offered;
    }

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
        const auto lock = lock_for_lookup();
        KeyPointer made = make(algorithm, parameters, key);
        return made == nullptr
                   ? nullptr
                   : std::make_shared<LibcryptoKey>(library_, algorithm, std::move(made));
    }

  private:
    [[nodiscard]] KeyPointer make(ALG_ID algorithm, Octets parameters, Octets key) const {
        switch (algorithm) {
        case CALG_RSA_SIGN:
            return make_rsa_key(library_.context, parameters, key);
        case CALG_DSS_SIGN:
            return make_dsa_key(library_.context, parameters, key);
        case CALG_ECDSA:
            return make_ec_key(library_.context, parameters, key);
        default:
            return nullptr;
        }
    }

    Library library_;
};

constinit LazyObject<const LibcryptoProvider> provider;

} // namespace

void visit_libcrypto_locks(LockVisitor visit) { std::ranges::for_each(lookup_locks, visit); }

const Provider& libcrypto_provider() {
    return provider.get([] {
        const auto lock = lock_for_lookup();
        return std::make_unique<const LibcryptoProvider>();
    });
}

} // namespace norvane
