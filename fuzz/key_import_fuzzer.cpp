// Imports a public key and verifies a signature with it under each hash of its provider: whatever
// the bits are, the answer is about them and never that something has failed. The input is: the
// algorithm (1 byte), the lengths of the parameters and of the key (2 bytes each, the most
// significant first), the parameters, the key, and the rest is the signature.

#include <norvane/wincrypt.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

struct Algorithm {
    const char* oid;
    DWORD provider_type;
};

constexpr Algorithm algorithms[] = {
    {"1.2.840.113549.1.1.1", PROV_RSA_FULL},  {"1.2.840.10040.4.1", PROV_RSA_FULL},
    {"1.2.840.10045.2.1", PROV_RSA_FULL},     {"1.2.643.2.2.20", PROV_NORVANE_GOST},
    {"1.2.643.2.2.19", PROV_NORVANE_GOST},    {"1.2.643.7.1.1.1.1", PROV_NORVANE_GOST},
    {"1.2.643.7.1.1.1.2", PROV_NORVANE_GOST},
};

constexpr ALG_ID hashes[] = {CALG_SHA1, CALG_SHA_512, CALG_NORVANE_GOST_R3411_94,
                             CALG_NORVANE_GOST_R3411_2012_256, CALG_NORVANE_GOST_R3411_2012_512};

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

HCRYPTPROV provider(DWORD type) {
    HCRYPTPROV handle = 0;
    require(CryptAcquireContextA(&handle, nullptr, nullptr, type, CRYPT_VERIFYCONTEXT) != FALSE);
    return handle;
}

/// The parts of the input, as copies of their exact size.
class Input {
  public:
    explicit Input(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    std::size_t number(std::size_t octets) {
        std::size_t value = 0;
        for (const BYTE octet : take(octets)) {
            value = value << 8 | octet;
        }
        return value;
    }
    Bytes take(std::size_t size) {
        const auto part = rest_.first(std::min(size, rest_.size()));
        rest_ = rest_.subspan(part.size());
        return {part.begin(), part.end()};
    }

  private:
    std::span<const std::uint8_t> rest_;
};

void verify_with_each_hash(HCRYPTPROV provider, HCRYPTKEY key, const Bytes& signature) {
    for (const ALG_ID algorithm : hashes) {
        HCRYPTHASH hash = 0;
        if (CryptCreateHash(provider, algorithm, 0, 0, &hash) == FALSE) {
            continue;
        }
        SetLastError(ERROR_SUCCESS);
        const BOOL good = CryptVerifySignatureW(
            hash, signature.data(), static_cast<DWORD>(signature.size()), key, nullptr, 0);
        require(good != FALSE || GetLastError() == NTE_BAD_SIGNATURE ||
                GetLastError() == NTE_BAD_ALGID);
        require(CryptDestroyHash(hash) != FALSE);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    const Algorithm& algorithm = algorithms[input.number(1) % std::size(algorithms)];
    const std::size_t parameters_size = input.number(2);
    const std::size_t key_size = input.number(2);
    Bytes parameters = input.take(parameters_size);
    Bytes key_bytes = input.take(key_size);
    const Bytes signature = input.take(size);
    std::string oid = algorithm.oid;
    CERT_PUBLIC_KEY_INFO info{
        {oid.data(), {static_cast<DWORD>(parameters.size()), parameters.data()}},
        {static_cast<DWORD>(key_bytes.size()), key_bytes.data(), 0}};

    const HCRYPTPROV opened = provider(algorithm.provider_type);
    // What is imported once is imported again, from what is remembered.
    HCRYPTKEY keys[2] = {};
    for (HCRYPTKEY& key : keys) {
        require(CryptImportPublicKeyInfoEx(opened, X509_ASN_ENCODING, &info, 0, 0, nullptr, &key) !=
                FALSE);
    }
    for (const HCRYPTKEY key : keys) {
        verify_with_each_hash(opened, key, signature);
        require(CryptDestroyKey(key) != FALSE);
    }
    require(CryptReleaseContext(opened, 0) != FALSE);
    return 0;
}
