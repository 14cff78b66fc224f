#include "crypto/OidInfoLookup.h"

#include "values/ProcessFailure.h"

#include <array>

namespace norvane {
namespace {

BOOL WINAPI call_back(const CRYPT_OID_INFO* info, void* enumerator) noexcept {
    return static_cast<COidInfoEnum*>(enumerator)->on_oid_info(*info) ? TRUE : FALSE;
}

} // namespace

void COidInfoEnum::walk(DWORD group) {
    static_cast<void>(platform_answer([&] { return CryptEnumOIDInfo(group, 0, this, call_back); },
                                      source_module::encode_and, __LINE__));
}

bool CFindPubKeyAlgId::on_oid_info(const CRYPT_OID_INFO& info) noexcept {
    if (info.pszOID != oid || GET_ALG_CLASS(info.Algid) != class_mask) {
        return true;
    }
    found_algid = info.Algid;
    found_info = &info;
    return false;
}

ALG_ID algorithm_number(const char* oid) {
    return platform_answer([&] { return CertOIDToAlgId(oid); }, source_module::encode_and,
                           __LINE__);
}

const CRYPT_OID_INFO* find_signature_oid_info(const char* key_oid, const char* hash_oid) {
    CFindPubKeyAlgId key(key_oid, ALG_CLASS_SIGNATURE);
    key.walk(CRYPT_PUBKEY_ALG_OID_GROUP_ID);
    if (key.found_algid == 0) {
        return nullptr;
    }
    std::array<ALG_ID, 2> pair{algorithm_number(hash_oid), key.found_algid};
    return platform_answer(
        [&] {
            return CryptFindOIDInfo(CRYPT_OID_INFO_SIGN_KEY, pair.data(),
                                    CRYPT_SIGN_ALG_OID_GROUP_ID);
        },
        source_module::encode_and, __LINE__);
}

} // namespace norvane
