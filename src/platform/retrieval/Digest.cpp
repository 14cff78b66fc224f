#include "platform/retrieval/Digest.h"

#include "platform/crypto/Libcrypto.h"

#include <mutex>
#include <new>

#include <openssl/evp.h>

namespace norvane {
namespace {

/// A library context of its own, apart from what an application configures or loads. Never freed:
/// threads may end later than static objects.
const EVP_MD* sha256() {
    // A fork may find it half made, and the child then makes its own.
    static std::once_flag once;
    static EVP_MD* algorithm = nullptr;
    std::call_once(once, [] {
        OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
        EVP_MD* const fetched =
            context == nullptr ? nullptr : EVP_MD_fetch(context, "SHA256", nullptr);
        if (fetched == nullptr) {
            OSSL_LIB_CTX_free(context);
            throw std::bad_alloc();
        }
        algorithm = fetched;
    });
    return algorithm;
}

/// A context in which a digest has begun; null if there is no memory.
EVP_MD_CTX* begin() {
    const ErrorQueueGuard guard;
    DigestContext context(EVP_MD_CTX_new());
    const bool begun =
        context != nullptr && EVP_DigestInit_ex2(context.get(), sha256(), nullptr) == 1;
    return begun ? context.release() : nullptr;
}

void require(int result) {
    if (result != 1) {
        throw std::bad_alloc();
    }
}

} // namespace

void Digester::Release::operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }

Digester::Digester() : context_(begin()) {
    if (context_ == nullptr) {
        throw std::bad_alloc();
    }
}

Digester& Digester::add(std::span<const std::uint8_t> bytes) {
    require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()));
    return *this;
}

Digest Digester::finish() {
    Digest digest{};
    require(EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr));
    return digest;
}

std::string to_hex(const Digest& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t octet : digest) {
        text += digits[octet >> 4];
        text += digits[octet & 0x0f];
    }
    return text;
}

} // namespace norvane
