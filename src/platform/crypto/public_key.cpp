#include "platform/crypto/Handles.h"
#include "platform/crypto/KeyCache.h"
#include "platform/crypto/OidTable.h"
#include "platform/store/guarded.h"

#include <string_view>

namespace {

using norvane::Octets;
using norvane::OidEntry;

/// Room for the largest RSA and DSA keys that are taken. What is longer need not be looked at.
constexpr DWORD max_key_info_size = 4096;

template <class Blob>
bool is_readable(const Blob& blob) noexcept {
    return blob.pbData != nullptr || blob.cbData == 0;
}

template <class Blob>
Octets octets_of(const Blob& blob) noexcept {
    return {blob.pbData, blob.cbData};
}

/// What the table of identifiers says about a key's algorithm.
struct KeyAlgorithm {
    bool known = false;
    bool wanted = false;  ///< one of its numbers is the one that the caller gave
    ALG_ID signature = 0; ///< its number of the class of signatures, 0 if it has none
};

KeyAlgorithm look_up(std::string_view oid, ALG_ID wanted) noexcept {
    KeyAlgorithm found;
    for (const OidEntry& entry : norvane::oid_table()) {
        if (entry.group() == CRYPT_PUBKEY_ALG_OID_GROUP_ID && entry.oid == oid) {
            found.known = true;
            found.wanted |= wanted == 0 || wanted == entry.algorithm();
            if (GET_ALG_CLASS(entry.algorithm()) == ALG_CLASS_SIGNATURE) {
                found.signature = entry.algorithm();
            }
        }
    }
    return found;
}

/// What bits that are no key are imported as: no signature holds under it. A certificate with such
/// bits is like one whose key signed nothing, and says no more about any other.
class NoKey final : public norvane::PublicKey {
  public:
    [[nodiscard]] norvane::Verdict verify(ALG_ID /*hash*/, Octets /*digest*/,
                                          Octets /*signature*/) const override {
        return norvane::Verdict::bad;
    }
};

std::shared_ptr<const norvane::PublicKey> import_or_none(const norvane::KeySource& source,
                                                         DWORD unused_bits) {
    std::shared_ptr<const norvane::PublicKey> key;
    if (unused_bits == 0 && source.parameters.size() + source.key.size() <= max_key_info_size) {
        key = norvane::key_cache().get(source);
    }
    return key != nullptr ? key : std::make_shared<const NoKey>();
}

} // namespace

BOOL CryptImportPublicKeyInfoEx(HCRYPTPROV hCryptProv, DWORD dwCertEncodingType,
                                PCERT_PUBLIC_KEY_INFO pInfo, ALG_ID aiKeyAlg, DWORD dwFlags,
                                void* pvAuxInfo, HCRYPTKEY* phKey) noexcept {
    const auto* const context = norvane::object_of<norvane::ProviderContext>(hCryptProv);
    if (context == nullptr) {
        return norvane::fail(NTE_BAD_UID);
    }
    if (pInfo == nullptr || phKey == nullptr || pvAuxInfo != nullptr ||
        pInfo->Algorithm.pszObjId == nullptr || !is_readable(pInfo->Algorithm.Parameters) ||
        !is_readable(pInfo->PublicKey)) {
        return norvane::fail(ERROR_INVALID_PARAMETER);
    }
    if (dwFlags != 0) {
        return norvane::fail(NTE_BAD_FLAGS);
    }
    const KeyAlgorithm algorithm = look_up(pInfo->Algorithm.pszObjId, aiKeyAlg);
    if (!algorithm.known || (dwCertEncodingType & X509_ASN_ENCODING) == 0) {
        return norvane::fail(ERROR_FILE_NOT_FOUND);
    }
    return norvane::guarded(norvane::provider_codes, [&] {
        if (!algorithm.wanted || !context->provider.offers(algorithm.signature)) {
            return norvane::fail(NTE_BAD_ALGID);
        }
        const norvane::KeySource source{.provider = &context->provider,
                                        .algorithm = algorithm.signature,
                                        .parameters = octets_of(pInfo->Algorithm.Parameters),
                                        .key = octets_of(pInfo->PublicKey)};
        *phKey = norvane::make_handle<norvane::KeyObject>(
            context->provider, import_or_none(source, pInfo->PublicKey.cUnusedBits));
        return TRUE;
    });
}

BOOL CryptDestroyKey(HCRYPTKEY hKey) noexcept {
    const auto* const key = norvane::object_of<norvane::KeyObject>(hKey);
    if (key == nullptr) {
        return norvane::fail(NTE_BAD_KEY);
    }
    delete key;
    return TRUE;
}
