// Providers, hashes and keys of the platform that end with their scope.
#pragma once

#include "support/Der.h"

#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace norvane::testing {

template <auto destroy>
class Owned {
  public:
    explicit Owned(std::uintptr_t handle = 0) : handle_(handle) {}
    Owned(Owned&& other) noexcept : handle_(std::exchange(other.handle_, 0)) {}
    Owned& operator=(Owned&&) = delete;
    ~Owned() {
        if (handle_ != 0) {
            EXPECT_NE(destroy(handle_), FALSE);
        }
    }
    operator std::uintptr_t() const { return handle_; }

  private:
    std::uintptr_t handle_;
};

inline BOOL release_context(HCRYPTPROV provider) { return CryptReleaseContext(provider, 0); }
using OwnedProvider = Owned<release_context>;
using OwnedHash = Owned<CryptDestroyHash>;
using OwnedKey = Owned<CryptDestroyKey>;

[[nodiscard]] inline OwnedProvider open_provider(DWORD type = PROV_RSA_FULL) {
    HCRYPTPROV provider = 0;
    EXPECT_NE(CryptAcquireContextA(&provider, nullptr, nullptr, type, CRYPT_VERIFYCONTEXT), FALSE);
    return OwnedProvider(provider);
}

[[nodiscard]] inline OwnedHash hash_of(HCRYPTPROV provider, ALG_ID algorithm, const Bytes& data) {
    HCRYPTHASH hash = 0;
    EXPECT_NE(CryptCreateHash(provider, algorithm, 0, 0, &hash), FALSE);
    EXPECT_NE(CryptHashData(hash, data.data(), static_cast<DWORD>(data.size()), 0), FALSE);
    return OwnedHash(hash);
}

// The parts of a SubjectPublicKeyInfo.
struct KeyParts {
    std::string algorithm;
    Bytes parameters;
    Bytes key;

    // The key, or 0 with the last error set.
    [[nodiscard]] OwnedKey import_into(HCRYPTPROV provider) const {
        Bytes own_parameters = parameters;
        Bytes own_key = key;
        std::string own_algorithm = algorithm;
        CERT_PUBLIC_KEY_INFO info{
            {own_algorithm.data(),
             {static_cast<DWORD>(own_parameters.size()), own_parameters.data()}},
            {static_cast<DWORD>(own_key.size()), own_key.data(), 0}};
        HCRYPTKEY imported = 0;
        const BOOL done = CryptImportPublicKeyInfoEx(provider, X509_ASN_ENCODING, &info, 0, 0,
                                                     nullptr, &imported);
        EXPECT_EQ(done != FALSE, imported != 0);
        return OwnedKey(imported);
    }
};

[[nodiscard]] inline Bytes reversed(const Bytes& bytes) { return {bytes.rbegin(), bytes.rend()}; }

// ERROR_SUCCESS if the signature, as it stands in a certificate, is good; else the last error.
[[nodiscard]] inline DWORD verify(HCRYPTHASH hash, const Bytes& signature, HCRYPTKEY key) {
    const Bytes turned = reversed(signature);
    SetLastError(ERROR_SUCCESS);
    const BOOL good = CryptVerifySignatureW(hash, turned.data(), static_cast<DWORD>(turned.size()),
                                            key, nullptr, 0);
    EXPECT_EQ(good != FALSE, GetLastError() == ERROR_SUCCESS);
    return GetLastError();
}

} // namespace norvane::testing
