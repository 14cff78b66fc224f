#include "platform/crypto/Handles.h"
#include "platform/store/guarded.h"

#include <algorithm>
#include <array>

namespace {

using norvane::Digest;
using norvane::HashObject;
using norvane::KeyObject;
using norvane::Verdict;

/// The longest signature is the one of the longest RSA key.
constexpr std::size_t max_signature_size = 2048;

Digest finished(HashObject& hash) {
    const std::lock_guard lock(hash.mutex);
    if (!hash.value) {
        hash.value = hash.at_work->finish();
        hash.at_work.reset();
    }
    return *hash.value;
}

} // namespace

BOOL CryptVerifySignatureW(HCRYPTHASH hHash, const BYTE* pbSignature, DWORD dwSigLen,
                           HCRYPTKEY hPubKey, LPCWSTR szDescription, DWORD dwFlags) noexcept {
    auto* const hash = norvane::object_of<HashObject>(hHash);
    if (hash == nullptr) {
        return norvane::fail(NTE_BAD_HASH);
    }
    const auto* const key = norvane::object_of<KeyObject>(hPubKey);
    if (key == nullptr || &key->provider != &hash->provider) {
        return norvane::fail(NTE_BAD_KEY);
    }
    if ((pbSignature == nullptr && dwSigLen != 0) || szDescription != nullptr) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (dwFlags != 0) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    if (dwSigLen == 0 || dwSigLen > max_signature_size) {
        return norvane::fail(NTE_BAD_SIGNATURE);
    }
    return norvane::guarded(norvane::provider_codes, [&] {
        std::array<std::uint8_t, max_signature_size> forward{};
        std::reverse_copy(pbSignature, pbSignature + dwSigLen, forward.begin());
        const Digest digest = finished(*hash);
        switch (
            key->public_key->verify(hash->algorithm, digest.view(), {forward.data(), dwSigLen})) {
        case Verdict::good:
            return TRUE;
        case Verdict::wrong_hash:
            return norvane::fail(NTE_BAD_ALGID);
        case Verdict::bad:
            break;
        }
        return norvane::fail(NTE_BAD_SIGNATURE);
    });
}
