#pragma once

#include <memory>
#include <stdexcept>

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>

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
using NumberContext = std::unique_ptr<BN_CTX, Releaser<BN_CTX_free>>;
using MontgomeryContext = std::unique_ptr<BN_MONT_CTX, Releaser<BN_MONT_CTX_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, Releaser<EVP_MD_CTX_free>>;
using CurveGroup = std::unique_ptr<EC_GROUP, Releaser<EC_GROUP_free>>;
using CurvePoint = std::unique_ptr<EC_POINT, Releaser<EC_POINT_free>>;

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
