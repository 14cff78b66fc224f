#include "support/Key.h"

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include <openssl/evp.h>
#include <openssl/x509.h>

namespace norvane::testing {
namespace {

void require(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(std::string("libcrypto cannot ") + what);
}

template <typename Make>
const Key& cached(std::size_t index, Make make) {
    static std::mutex mutex; // one for each Make, that is for each kind of key
    static std::map<std::size_t, Key> keys;
    const std::scoped_lock lock(mutex);
    auto found = keys.find(index);
    if (found == keys.end())
        found = keys.emplace(index, make()).first;
    return found->second;
}

} // namespace

Key::Key(EVP_PKEY* pair, Bytes signature_algorithm)
    : pair_(pair, EVP_PKEY_free), signature_algorithm_(std::move(signature_algorithm)) {
    require(pair != nullptr, "generate a key pair");
}

const Key& Key::rsa(std::size_t index) {
    return cached(index, [] {
        return Key(EVP_RSA_gen(2048), sequence(oid("1.2.840.113549.1.1.11"), null()));
    });
}

const Key& Key::ec(std::size_t index) {
    return cached(index,
                  [] { return Key(EVP_EC_gen("P-256"), sequence(oid("1.2.840.10045.4.3.2"))); });
}

Bytes Key::spki() const {
    std::uint8_t* out = nullptr;
    const int size = i2d_PUBKEY(pair_.get(), &out);
    require(size > 0, "encode a public key");
    const std::shared_ptr<void> owner(out, [](void* block) { OPENSSL_free(block); });
    return {out, out + size};
}

Bytes Key::sign(const Bytes& message) const {
    const std::shared_ptr<EVP_MD_CTX> digest(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    require(EVP_DigestSignInit(digest.get(), nullptr, EVP_sha256(), nullptr, pair_.get()) == 1,
            "begin a signature");
    auto size = static_cast<std::size_t>(EVP_PKEY_get_size(pair_.get()));
    Bytes out(size);
    require(EVP_DigestSign(digest.get(), out.data(), &size, message.data(), message.size()) == 1,
            "sign");
    out.resize(size);
    return out;
}

Bytes Key::sign_element(const Bytes& tbs) const {
    return sequence(tbs, signature_algorithm_, bit_string(sign(tbs)));
}

} // namespace norvane::testing
