// Asks the dispatcher for verdicts about anything at all, with any stores and URLs, and holds each
// against the three that there are: good, revoked, no check. Each question is asked again with a
// listener, which changes nothing, and with a verification failing for want of memory: whatever the
// material, that is no check.
//
// Signatures are made up, so that mutated material still hangs together: one is good if its first
// octet is the last octet of the key. There is no network: every URL delivers the same objects.

#include "VerdictInput.h"

#include "support/RecordWalk.h"

#include <norvane/revocation.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <dlfcn.h>
#include <list>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace {

using norvane::VerdictObject;
using Bytes = std::span<const std::uint8_t>;

constexpr VerdictObject no_objects = VerdictObject::count;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// What a verification costs is no subject of this fuzzer; a question ends after so many.
constexpr const char* max_verifications = "300";

struct World {
    /// By kind, and behind the last kind nothing.
    std::array<std::vector<Bytes>, std::size_t(VerdictObject::count) + 1> objects;
    std::uint8_t modes = 0;
    std::size_t verifications = 0;
    std::size_t failing_verification = 0; ///< Counted from 1; 0 for none.

    [[nodiscard]] const std::vector<Bytes>& of(VerdictObject kind) const {
        return objects[std::size_t(kind)];
    }
    [[nodiscard]] bool has(norvane::VerdictMode mode) const { return (modes & mode) != 0; }
};
World world;

World read_world(Bytes input) {
    World read;
    read.modes = input.front();
    input = input.subspan(1);
    while (input.size() >= 3) {
        const std::size_t kind = input[0] % std::size_t(VerdictObject::count);
        const std::size_t length =
            std::min<std::size_t>(input[1] + input[2] * std::size_t{256}, input.size() - 3);
        read.objects[kind].push_back(input.subspan(3, length));
        input = input.subspan(3 + length);
    }
    return read;
}

DWORD size_of(Bytes bytes) { return static_cast<DWORD>(bytes.size()); }

/// A platform function behind the one of the same name in this file.
template <class Function>
Function platform(const char* symbol) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
}

/// A new store with what can be taken of these objects.
HCERTSTORE open_store(VerdictObject certificates, VerdictObject crls) {
    static const auto open = platform<decltype(&CertOpenStore)>("norvane_CertOpenStore");
    HCERTSTORE const store = open(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
    for (const Bytes bytes : world.of(certificates)) {
        CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, bytes.data(), size_of(bytes),
                                         CERT_STORE_ADD_ALWAYS, nullptr);
    }
    for (const Bytes bytes : world.of(crls)) {
        CertAddEncodedCRLToStore(store, X509_ASN_ENCODING, bytes.data(), size_of(bytes),
                                 CERT_STORE_ADD_ALWAYS, nullptr);
    }
    return store;
}

/// A certificate in the hands of a caller, who need not have it from the platform.
class CallersCertificate {
  public:
    explicit CallersCertificate(Bytes bytes)
        : context_(CertCreateCertificateContext(X509_ASN_ENCODING, bytes.data(), size_of(bytes))),
          bare_{X509_ASN_ENCODING, const_cast<BYTE*>(bytes.data()), size_of(bytes), nullptr,
                nullptr} {}
    CallersCertificate(const CallersCertificate&) = delete;
    CallersCertificate& operator=(const CallersCertificate&) = delete;
    ~CallersCertificate() { CertFreeCertificateContext(context_); }

    [[nodiscard]] PCCERT_CONTEXT get() const { return context_ != nullptr ? context_ : &bare_; }
    [[nodiscard]] bool is_certificate() const { return context_ != nullptr; }

  private:
    PCCERT_CONTEXT context_;
    CERT_CONTEXT bare_;
};

void check_status(BOOL result, const CERT_REVOCATION_STATUS& status, std::size_t count) {
    require(status.dwIndex < count);
    require(result ? status.dwError == ERROR_SUCCESS
                   : status.dwError == CRYPT_E_REVOKED ||
                         status.dwError == CRYPT_E_NO_REVOCATION_CHECK);
    require(result || GetLastError() == status.dwError);
    require(status.dwError == CRYPT_E_REVOKED || status.dwReason == 0);
    require(status.fHasFreshnessTime || status.dwFreshnessTime == 0);
}

void check_crl_info(BOOL result, DWORD error, const CERT_REVOCATION_CRL_INFO& info) {
    require(result || error == CRYPT_E_REVOKED ||
            (info.pBaseCrlContext == nullptr && info.pDeltaCrlContext == nullptr));
    require(info.pCrlEntry == nullptr ||
            (info.fDeltaCrlEntry ? info.pDeltaCrlContext : info.pBaseCrlContext) != nullptr);
    CertFreeCRLContext(info.pBaseCrlContext);
    CertFreeCRLContext(info.pDeltaCrlContext);
}

struct Answer {
    BOOL result = FALSE;
    DWORD error = 0;
    DWORD reason = 0;
    DWORD index = 0;

    [[nodiscard]] bool operator==(const Answer&) const = default;
};

Answer ask() {
    std::list<CallersCertificate> certificates;
    std::vector<PVOID> contexts;
    for (const Bytes bytes : world.of(VerdictObject::subject)) {
        contexts.push_back(const_cast<CERT_CONTEXT*>(certificates.emplace_back(bytes).get()));
    }
    if (contexts.empty()) {
        return {};
    }
    std::optional<CallersCertificate> hint;
    for (const Bytes bytes : world.of(VerdictObject::issuer_hint)) {
        hint.emplace(bytes);
    }
    // 2026-06-01
    FILETIME time{0x96E14000, 0x01DCF159};
    HCERTSTORE store = open_store(VerdictObject::caller_certificate, no_objects);
    HCERTSTORE const crl_store = open_store(no_objects, VerdictObject::caller_crl);
    CERT_REVOCATION_CRL_INFO crl_info{sizeof crl_info, nullptr, nullptr, nullptr, FALSE};
    CERT_REVOCATION_PARA para{};
    para.cbSize = sizeof para;
    para.pIssuerCert = hint && hint->is_certificate() ? hint->get() : nullptr;
    para.cCertStore = 1;
    para.rgCertStore = &store;
    para.hCrlStore = world.has(norvane::verdict_with_crl_store) ? crl_store : nullptr;
    para.pftTimeToUse = &time;
    para.dwUrlRetrievalTimeout = 1000;
    para.pCrlInfo = world.has(norvane::verdict_with_crl_info) ? &crl_info : nullptr;
    const DWORD flags =
        (world.has(norvane::verdict_cache_only) ? CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION : 0) |
        (world.has(norvane::verdict_accumulative) ? CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG : 0);
    CERT_REVOCATION_STATUS status{};
    status.cbSize = sizeof status;
    const BOOL result = CertVerifyRevocation(
        X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE, static_cast<DWORD>(contexts.size()),
        contexts.data(), flags, world.has(norvane::verdict_without_parameters) ? nullptr : &para,
        &status);
    check_status(result, status, contexts.size());
    require(world.failing_verification == 0 || world.verifications < world.failing_verification ||
            status.dwError == CRYPT_E_NO_REVOCATION_CHECK);
    check_crl_info(result, status.dwError, crl_info);
    CertCloseStore(store, 0);
    CertCloseStore(crl_store, 0);
    return {result, status.dwError, status.dwReason, status.dwIndex};
}

} // namespace

extern "C" __attribute__((visibility("default"))) BOOL
verdict_fuzzer_check(DWORD encoding_type, DWORD revocation_type, DWORD count, PVOID contexts[],
                     DWORD flags, PCERT_REVOCATION_PARA para, PCERT_REVOCATION_STATUS status) {
    return CertDllVerifyRevocation(encoding_type, revocation_type, count, contexts, flags, para,
                                   status);
}

// Functions of the platform as the module sees them here.

HCERTSTORE CertOpenStore(LPCSTR lpszStoreProvider, DWORD dwEncodingType, uintptr_t hCryptProv,
                         DWORD dwFlags, const void* pvPara) noexcept {
    if (lpszStoreProvider == CERT_STORE_PROV_SYSTEM_W) {
        return *static_cast<const WCHAR*>(pvPara) == u'R'
                   ? open_store(VerdictObject::root, no_objects)
                   : open_store(VerdictObject::ca_certificate, VerdictObject::ca_crl);
    }
    static const auto open = platform<decltype(&CertOpenStore)>("norvane_CertOpenStore");
    return open(lpszStoreProvider, dwEncodingType, hCryptProv, dwFlags, pvPara);
}

BOOL CryptRetrieveObjectByUrlA(LPCSTR, LPCSTR pszObjectOid, DWORD dwRetrievalFlags, DWORD,
                               LPVOID* ppvObject, HCRYPTASYNC, PCRYPT_CREDENTIALS, LPVOID,
                               PCRYPT_RETRIEVE_AUX_INFO) noexcept {
    *ppvObject = nullptr;
    if ((dwRetrievalFlags & CRYPT_CACHE_ONLY_RETRIEVAL) != 0 &&
        world.has(norvane::verdict_nothing_cached)) {
        SetLastError(CRYPT_E_NOT_FOUND);
        return FALSE;
    }
    *ppvObject = pszObjectOid == CONTEXT_OID_CRL
                     ? open_store(no_objects, VerdictObject::served_crl)
                     : open_store(VerdictObject::served_certificate, no_objects);
    return TRUE;
}

BOOL CryptImportPublicKeyInfoEx(HCRYPTPROV, DWORD, PCERT_PUBLIC_KEY_INFO pInfo, ALG_ID, DWORD,
                                void*, HCRYPTKEY* phKey) noexcept {
    if (pInfo->PublicKey.cbData == 0) {
        SetLastError(NTE_BAD_PUBLIC_KEY);
        return FALSE;
    }
    *phKey = HCRYPTKEY{1} + pInfo->PublicKey.pbData[pInfo->PublicKey.cbData - 1];
    return TRUE;
}

BOOL CryptDestroyKey(HCRYPTKEY) noexcept { return TRUE; }

BOOL CryptVerifySignatureW(HCRYPTHASH, const BYTE* pbSignature, DWORD dwSigLen, HCRYPTKEY hPubKey,
                           LPCWSTR, DWORD) noexcept {
    if (++world.verifications == world.failing_verification) {
        SetLastError(NTE_NO_MEMORY);
        return FALSE;
    }
    // The octets come in reverse order.
    if (dwSigLen != 0 && pbSignature[dwSigLen - 1] == hPubKey - 1) {
        return TRUE;
    }
    SetLastError(NTE_BAD_SIGNATURE);
    return FALSE;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool configured =
        NorvaneSetConfiguration("providers", "modules", VERDICT_MODULE) != FALSE &&
        NorvaneSetConfiguration("limits", "signature_verifications", max_verifications) != FALSE;
    require(configured);
    if (size != 0) {
        world = read_world({data, size});
        const Answer answer = ask();
        if (const std::size_t count = std::exchange(world.verifications, 0); count != 0) {
            world.failing_verification = 1 + size % count;
            ask();
        }
        world.failing_verification = 0;
        const norvane::testing::RecordWalk walk;
        require(ask() == answer);
        require(walk.open_branches() == 0);
    }
    return 0;
}
