#pragma once

#include <memory>
#include <stdexcept>

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>

namespace norvane {

/// libcrypto failed for another reason than the data given to it.
class LibcryptoError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

template <auto release>
struct Releaser {
    template <class T>
    void operator()(T* object) const noexcept {
        release(object);
    }
};

using BigNumber = std::unique_ptr<BIGNUM, Releaser<BN_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, Releaser<EVP_MD_CTX_free>>;
using KeyPointer = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Releaser<EVP_PKEY_CTX_free>>;
using ParameterBuilder = std::unique_ptr<OSSL_PARAM_BLD, Releaser<OSSL_PARAM_BLD_free>>;
using Parameters = std::unique_ptr<OSSL_PARAM, Releaser<OSSL_PARAM_free>>;

/// `object`, which must not be null.
template <class T>
[[nodiscard]] T* require(T* object, const char* what) {
    if (object == nullptr) {
        throw LibcryptoError(what);
    }
    return object;
}

inline void require(int result, const char* what) {
    if (result <= 0) {
        throw LibcryptoError(what);
    }
}

/// While it lives, the errors that libcrypto leaves behind are kept away from the application that
/// uses libcrypto in the same thread.
class ErrorQueueGuard {
  public:
    ErrorQueueGuard() noexcept { ERR_set_mark(); }
    ErrorQueueGuard(const ErrorQueueGuard&) = delete;
    ErrorQueueGuard& operator=(const ErrorQueueGuard&) = delete;
    ~ErrorQueueGuard() { ERR_pop_to_mark(); }
};

} // namespace norvane
