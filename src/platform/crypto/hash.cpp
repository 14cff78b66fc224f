#include "platform/crypto/AllowedHashes.h"
#include "platform/crypto/Handles.h"
#include "platform/store/guarded.h"

using norvane::HashObject;

BOOL CryptCreateHash(HCRYPTPROV hProv, ALG_ID Algid, HCRYPTKEY hKey, DWORD dwFlags,
                     HCRYPTHASH* phHash) noexcept {
    const auto* const context = norvane::object_of<norvane::ProviderContext>(hProv);
    if (context == nullptr) {
        return norvane::fail(NTE_BAD_UID);
    }
    if (phHash == nullptr) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (hKey != 0) {
        return norvane::fail(NTE_BAD_KEY);
    }
    if (dwFlags != 0) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    return norvane::guarded(norvane::provider_codes, [&] {
        auto hash =
            norvane::is_hash_allowed(Algid) ? context->provider.create_hash(Algid) : nullptr;
        if (hash == nullptr) {
            return norvane::fail(NTE_BAD_ALGID);
        }
        *phHash = norvane::make_handle<HashObject>(context->provider, Algid, std::move(hash));
        return TRUE;
    });
}

BOOL CryptHashData(HCRYPTHASH hHash, const BYTE* pbData, DWORD dwDataLen, DWORD dwFlags) noexcept {
    auto* const hash = norvane::object_of<HashObject>(hHash);
    if (hash == nullptr) {
        return norvane::fail(NTE_BAD_HASH);
    }
    if (pbData == nullptr && dwDataLen != 0) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (dwFlags != 0) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    return norvane::guarded(norvane::provider_codes, [&] {
        const std::lock_guard lock(hash->mutex);
        if (hash->at_work == nullptr) {
            return norvane::fail(NTE_BAD_HASH_STATE);
        }
        hash->at_work->update({pbData, dwDataLen});
        return TRUE;
    });
}

BOOL CryptDestroyHash(HCRYPTHASH hHash) noexcept {
    const auto* const hash = norvane::object_of<HashObject>(hHash);
    if (hash == nullptr) {
        return norvane::fail(NTE_BAD_HASH);
    }
    delete hash;
    return TRUE;
}
