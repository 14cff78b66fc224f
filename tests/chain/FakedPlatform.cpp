#include "FakedPlatform.h"

#include "platform/StoreMaterial.h"

#include <algorithm>
#include <tuple>

namespace norvane::testing {

FakedPlatform faked;

namespace {

Bytes encoding_of(PCCERT_CONTEXT context) {
    return {context->pbCertEncoded, context->pbCertEncoded + context->cbCertEncoded};
}

} // namespace
} // namespace norvane::testing

using namespace norvane::testing;

extern "C" {
decltype(CryptRetrieveObjectByUrlA)
    faked_CryptRetrieveObjectByUrlA __asm__("__wrap_norvane_CryptRetrieveObjectByUrlA");
decltype(CertVerifyRevocation)
    faked_CertVerifyRevocation __asm__("__wrap_norvane_CertVerifyRevocation");
decltype(CertCreateCRLContext)
    faked_CertCreateCRLContext __asm__("__wrap_norvane_CertCreateCRLContext");
decltype(CertCreateCRLContext)
    real_CertCreateCRLContext __asm__("__real_norvane_CertCreateCRLContext");
decltype(CryptVerifySignatureW)
    faked_CryptVerifySignatureW __asm__("__wrap_norvane_CryptVerifySignatureW");
decltype(CryptVerifySignatureW)
    real_CryptVerifySignatureW __asm__("__real_norvane_CryptVerifySignatureW");
decltype(GetSystemTime) faked_GetSystemTime __asm__("__wrap_norvane_GetSystemTime");

BOOL faked_CryptRetrieveObjectByUrlA(LPCSTR url, LPCSTR kind, DWORD flags, DWORD timeout,
                                     LPVOID* object, HCRYPTASYNC /*hAsyncRetrieve*/,
                                     PCRYPT_CREDENTIALS /*pCredentials*/, LPVOID /*pvVerify*/,
                                     PCRYPT_RETRIEVE_AUX_INFO /*pAuxInfo*/) noexcept {
    faked.retrievals.push_back({url, flags, timeout, kind});
    faked.clock += std::min(faked.retrieval_takes[url], timeout);
    const auto found = faked.served.find(url);
    if ((flags & CRYPT_CACHE_ONLY_RETRIEVAL) != 0 || found == faked.served.end()) {
        SetLastError(ERROR_TIMEOUT);
        return FALSE;
    }
    const OpenStore store = OpenStore::memory();
    for (const Bytes& encoded : found->second)
        EXPECT_TRUE(kind == CONTEXT_OID_CRL ? store.add_crl(encoded) : store.add(encoded));
    *object = CertDuplicateStore(store.get());
    return TRUE;
}

BOOL faked_CertVerifyRevocation(DWORD encoding, DWORD type, DWORD count, PVOID contexts[],
                                DWORD flags, PCERT_REVOCATION_PARA para,
                                PCERT_REVOCATION_STATUS status) noexcept {
    EXPECT_EQ(std::tuple(encoding, type, count, para->cbSize, status->cbSize),
              std::tuple(0x10001U, 1U, 1U, 96U, 24U));
    Question& question = faked.questions.emplace_back();
    question.subject = encoding_of(static_cast<PCCERT_CONTEXT>(contexts[0]));
    question.issuer = encoding_of(para->pIssuerCert);
    question.flags = flags;
    question.timeout = para->dwUrlRetrievalTimeout;
    faked.clock += faked.question_takes;
    return TRUE;
}

PCCRL_CONTEXT faked_CertCreateCRLContext(DWORD encoding, const BYTE* bytes, DWORD size) noexcept {
    return faked.refuses_crl_contexts ? nullptr : real_CertCreateCRLContext(encoding, bytes, size);
}

BOOL faked_CryptVerifySignatureW(HCRYPTHASH hash, const BYTE* signature, DWORD size, HCRYPTKEY key,
                                 LPCWSTR description, DWORD flags) noexcept {
    faked.signatures.emplace_back(signature, signature + size);
    return real_CryptVerifySignatureW(hash, signature, size, key, description, flags);
}

void faked_GetSystemTime(LPSYSTEMTIME fields) noexcept {
    constexpr std::int64_t start = 134'000'000'000'000'000; // in 2025
    constexpr std::int64_t ticks_per_millisecond = 10'000;
    const auto ticks = static_cast<std::uint64_t>(start + faked.clock * ticks_per_millisecond);
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    EXPECT_TRUE(FileTimeToSystemTime(&time, fields));
}
}
