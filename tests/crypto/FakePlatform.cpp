#include "FakePlatform.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace norvane::fake {
namespace {

std::unique_ptr<Platform> current = std::make_unique<Platform>();

struct Context {
    const Provider* provider;
    std::size_t next = 0;
    int references = 1;
};

constexpr HCRYPTHASH hash_handle = 0x1000;
constexpr HCRYPTKEY key_handle = 0x2000;

Context& context_of(HCRYPTPROV handle) { return *reinterpret_cast<Context*>(handle); }

BOOL fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// Logs a call. False, with the last error set, if the test wants it to fail.
bool enter(const std::string& call) {
    current->log.push_back(call);
    const auto failure = current->failures.find(call);
    return failure == current->failures.end() || fail(failure->second) != FALSE;
}

BOOL acquire(HCRYPTPROV* handle, const std::string& name, DWORD type) {
    const auto& all = current->providers;
    const auto found = std::ranges::find_if(all, [&](const Provider& provider) {
        return provider.type == type && (name.empty() || provider.name == name);
    });
    if (found == all.end()) {
        return enter("Acquire") && fail(NTE_PROV_TYPE_NOT_DEF);
    }
    if (!enter("Acquire " + found->name)) {
        return FALSE;
    }
    ++current->open;
    *handle = reinterpret_cast<HCRYPTPROV>(new Context{&*found});
    return TRUE;
}

BOOL give_name(const std::string& name, LPSTR buffer, DWORD* size) {
    const DWORD capacity = *size;
    *size = static_cast<DWORD>(name.size() + 1);
    if (capacity < *size) {
        return fail(ERROR_MORE_DATA);
    }
    std::memcpy(buffer, name.c_str(), *size);
    return TRUE;
}

// The table that look-ups point into, made anew when the test has changed it.
const std::vector<CRYPT_OID_INFO>& infos() {
    static std::vector<CRYPT_OID_INFO> table;
    table.clear();
    for (Oid& oid : current->oids) {
        CRYPT_OID_INFO info{};
        info.cbSize = sizeof info;
        info.pszOID = oid.oid.c_str();
        info.dwGroupId = oid.group;
        info.Algid = oid.algorithm;
        info.ExtraInfo = {static_cast<DWORD>(oid.extra.size() * sizeof(DWORD)),
                          reinterpret_cast<BYTE*>(oid.extra.data())};
        table.push_back(info);
    }
    return table;
}

} // namespace

Platform& platform() { return *current; }
void reset() { current = std::make_unique<Platform>(); }

} // namespace norvane::fake

using namespace norvane::fake;

BOOL CryptEnumProvidersA(DWORD index, DWORD*, DWORD, DWORD* type, LPSTR name,
                         DWORD* size) noexcept {
    if (!enter("EnumProviders")) {
        return FALSE;
    }
    if (index >= platform().providers.size()) {
        return fail(ERROR_NO_MORE_ITEMS);
    }
    *type = platform().providers[index].type;
    return give_name(platform().providers[index].name, name, size);
}

BOOL CryptEnumProviderTypesA(DWORD index, DWORD*, DWORD, DWORD* type, LPSTR name,
                             DWORD* size) noexcept {
    if (!enter("EnumProviderTypes")) {
        return FALSE;
    }
    std::vector<DWORD> types;
    for (const Provider& provider : platform().providers) {
        if (std::ranges::find(types, provider.type) == types.end()) {
            types.push_back(provider.type);
        }
    }
    if (index >= types.size()) {
        return fail(ERROR_NO_MORE_ITEMS);
    }
    *type = types[index];
    return give_name("a type", name, size);
}

BOOL CryptAcquireContextA(HCRYPTPROV* handle, LPCSTR container, LPCSTR name, DWORD type,
                          DWORD flags) noexcept {
    return container == nullptr && name == nullptr && flags == CRYPT_VERIFYCONTEXT
               ? acquire(handle, "", type)
               : fail(ERROR_INVALID_PARAMETER);
}

BOOL CryptAcquireContextW(HCRYPTPROV* handle, LPCWSTR container, LPCWSTR name, DWORD type,
                          DWORD flags) noexcept {
    const std::u16string wide = name == nullptr ? u"" : name;
    return container == nullptr && flags == CRYPT_VERIFYCONTEXT
               ? acquire(handle, std::string(wide.begin(), wide.end()), type)
               : fail(ERROR_INVALID_PARAMETER);
}

BOOL CryptContextAddRef(HCRYPTPROV handle, DWORD*, DWORD) noexcept {
    ++context_of(handle).references;
    ++platform().open;
    return TRUE;
}

BOOL CryptReleaseContext(HCRYPTPROV handle, DWORD) noexcept {
    platform().log.emplace_back("ReleaseContext");
    --platform().open;
    if (--context_of(handle).references == 0) {
        delete &context_of(handle);
    }
    return TRUE;
}

BOOL CryptGetProvParam(HCRYPTPROV handle, DWORD parameter, BYTE* data, DWORD* size,
                       DWORD flags) noexcept {
    Context& context = context_of(handle);
    const auto failure = platform().failures.find("Param " + context.provider->name);
    if (failure != platform().failures.end()) {
        return fail(failure->second);
    }
    if (parameter != PP_ENUMALGS_EX || *size != 88 ||
        std::any_of(data, data + *size, [](BYTE byte) { return byte != 0; })) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    context.next = flags == CRYPT_FIRST ? 0 : context.next;
    if (context.next == context.provider->algorithms.size()) {
        return fail(ERROR_NO_MORE_ITEMS);
    }
    reinterpret_cast<PROV_ENUMALGS_EX*>(data)->aiAlgid =
        context.provider->algorithms[context.next++];
    reinterpret_cast<PROV_ENUMALGS_EX*>(data)->dwNameLen = 1; // Not to be left for the next call.
    return TRUE;
}

DWORD CertOIDToAlgId(LPCSTR text) noexcept {
    const auto found = std::ranges::find(platform().oids, text, &Oid::oid);
    return found == platform().oids.end() ? 0 : found->algorithm;
}

LPCSTR CertAlgIdToOID(DWORD algorithm) noexcept {
    const auto found = std::ranges::find(platform().oids, algorithm, &Oid::algorithm);
    return found == platform().oids.end() || found->group == CRYPT_SIGN_ALG_OID_GROUP_ID
               ? nullptr
               : found->oid.c_str();
}

BOOL CryptEnumOIDInfo(DWORD group, DWORD, void* argument,
                      PFN_CRYPT_ENUM_OID_INFO callback) noexcept {
    for (const CRYPT_OID_INFO& info : infos()) {
        if (info.dwGroupId == group && callback(&info, argument) == FALSE) {
            return FALSE;
        }
    }
    return TRUE;
}

PCCRYPT_OID_INFO CryptFindOIDInfo(DWORD key_type, void* key, DWORD group) noexcept {
    const auto* const pair = static_cast<const ALG_ID*>(key);
    for (const CRYPT_OID_INFO& info : infos()) {
        DWORD key_algorithm = 0;
        if (info.ExtraInfo.cbData >= sizeof key_algorithm) {
            std::memcpy(&key_algorithm, info.ExtraInfo.pbData, sizeof key_algorithm);
        }
        if (key_type == CRYPT_OID_INFO_SIGN_KEY && group == CRYPT_SIGN_ALG_OID_GROUP_ID &&
            info.Algid == pair[0] && key_algorithm == pair[1] && key_algorithm != 0) {
            return &info;
        }
    }
    return nullptr;
}

BOOL CryptCreateHash(HCRYPTPROV, ALG_ID algorithm, HCRYPTKEY, DWORD, HCRYPTHASH* hash) noexcept {
    if (!enter("CreateHash")) {
        return FALSE;
    }
    platform().log.back() += " " + std::to_string(algorithm);
    ++platform().open;
    *hash = hash_handle;
    return TRUE;
}

BOOL CryptHashData(HCRYPTHASH, const BYTE* data, DWORD size, DWORD) noexcept {
    platform().hashed.assign(data, data + size);
    return enter("HashData");
}

BOOL CryptImportPublicKeyInfoEx(HCRYPTPROV, DWORD encoding, PCERT_PUBLIC_KEY_INFO info, ALG_ID,
                                DWORD, void*, HCRYPTKEY* key) noexcept {
    const auto bytes = [](const auto& blob) {
        return std::vector<BYTE>(blob.pbData, blob.pbData + blob.cbData);
    };
    if (!enter("ImportPublicKeyInfoEx") || encoding != 0x10001) {
        return FALSE;
    }
    platform().key_oid = info->Algorithm.pszObjId;
    platform().parameters = bytes(info->Algorithm.Parameters);
    platform().key = bytes(info->PublicKey);
    platform().unused_bits = info->PublicKey.cUnusedBits;
    ++platform().open;
    *key = key_handle;
    return TRUE;
}

BOOL CryptVerifySignatureW(HCRYPTHASH hash, const BYTE* signature, DWORD size, HCRYPTKEY key,
                           LPCWSTR, DWORD) noexcept {
    platform().signature.assign(signature, signature + size);
    return enter("VerifySignature") && hash == hash_handle && key == key_handle ? platform().verdict
                                                                                : FALSE;
}

BOOL CryptDestroyHash(HCRYPTHASH hash) noexcept {
    platform().open -= hash == hash_handle ? 1 : 100;
    return enter("DestroyHash");
}

BOOL CryptDestroyKey(HCRYPTKEY key) noexcept {
    platform().open -= key == key_handle ? 1 : 100;
    return enter("DestroyKey");
}
