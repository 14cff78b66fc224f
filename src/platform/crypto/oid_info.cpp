#include "platform/config/AsciiCase.h"
#include "platform/crypto/OidTable.h"
#include "platform/store/guarded.h"

#include <algorithm>

namespace {

using norvane::OidEntry;

constexpr DWORD any_group = 0;

bool is_in_group(const OidEntry& entry, DWORD group) {
    return (group == any_group || entry.group() == group) && norvane::is_usable(entry);
}

/// The first entry of the group, or any, that `matches`; null with the last error set if there is
/// none.
template <class Matches>
PCCRYPT_OID_INFO find(DWORD group, Matches matches) noexcept {
    return norvane::guarded([&] {
        for (const OidEntry& entry : norvane::oid_table()) {
            if (matches(entry) && is_in_group(entry, group)) {
                return entry.info;
            }
        }
        return norvane::fail<PCCRYPT_OID_INFO>(CRYPT_E_NOT_FOUND);
    });
}

PCCRYPT_OID_INFO find_oid(std::string_view oid, DWORD group) noexcept {
    return find(group, [oid](const OidEntry& entry) { return entry.oid == oid; });
}

PCCRYPT_OID_INFO find_algorithm(ALG_ID algorithm, DWORD group) noexcept {
    return find(group,
                [algorithm](const OidEntry& entry) { return entry.algorithm() == algorithm; });
}

PCCRYPT_OID_INFO find_name(std::u16string_view name, DWORD group) noexcept {
    const auto small_letter = [](WCHAR c) noexcept {
        return c < 0x80 ? static_cast<WCHAR>(norvane::to_ascii_lower(static_cast<char>(c))) : c;
    };
    return find(group, [=](const OidEntry& entry) {
        return std::ranges::equal(name, std::u16string_view(entry.info->pwszName), {}, small_letter,
                                  small_letter);
    });
}

} // namespace

PCCRYPT_OID_INFO CryptFindOIDInfo(DWORD dwKeyType, void* pvKey, DWORD dwGroupId) noexcept {
    if (pvKey == nullptr) {
        return norvane::fail<PCCRYPT_OID_INFO>(E_INVALIDARG);
    }
    const DWORD group = dwGroupId & ~CRYPT_OID_DISABLE_SEARCH_DS_FLAG;
    switch (dwKeyType) {
    case CRYPT_OID_INFO_OID_KEY:
        return find_oid(static_cast<LPCSTR>(pvKey), group);
    case CRYPT_OID_INFO_NAME_KEY:
        return find_name(static_cast<LPCWSTR>(pvKey), group);
    case CRYPT_OID_INFO_ALGID_KEY:
        return find_algorithm(*static_cast<const ALG_ID*>(pvKey), group);
    case CRYPT_OID_INFO_SIGN_KEY: {
        const auto* const pair = static_cast<const ALG_ID*>(pvKey);
        return find(group, [hash = pair[0], key = pair[1]](const OidEntry& entry) {
            return entry.group() == CRYPT_SIGN_ALG_OID_GROUP_ID && entry.algorithm() == hash &&
                   entry.key_algorithm == key;
        });
    }
    default:
        return norvane::fail<PCCRYPT_OID_INFO>(E_INVALIDARG);
    }
}

BOOL CryptEnumOIDInfo(DWORD dwGroupId, DWORD dwFlags, void* pvArg,
                      PFN_CRYPT_ENUM_OID_INFO pfnEnumOIDInfo) noexcept {
    if (dwFlags != 0 || pfnEnumOIDInfo == nullptr) {
        return norvane::fail(E_INVALIDARG);
    }
    return norvane::guarded([&] {
        for (const OidEntry& entry : norvane::oid_table()) {
            if (is_in_group(entry, dwGroupId) && pfnEnumOIDInfo(entry.info, pvArg) == FALSE) {
                return FALSE;
            }
        }
        return TRUE;
    });
}

LPCSTR CertAlgIdToOID(DWORD dwAlgId) noexcept {
    const auto* const info = find_algorithm(dwAlgId, any_group);
    return info == nullptr ? nullptr : info->pszOID;
}

DWORD CertOIDToAlgId(LPCSTR pszObjId) noexcept {
    if (pszObjId == nullptr) {
        return norvane::fail<DWORD>(E_INVALIDARG);
    }
    const auto* const info = find_oid(pszObjId, any_group);
    return info == nullptr ? 0 : info->Algid;
}
