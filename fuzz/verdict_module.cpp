// The revocation module that the dispatcher loads in the fuzzer of verdicts. What answers is linked
// into the fuzzer itself.

#include <norvane/revocation.h>

extern "C" BOOL verdict_fuzzer_check(DWORD, DWORD, DWORD, PVOID[], DWORD, PCERT_REVOCATION_PARA,
                                     PCERT_REVOCATION_STATUS);

NORVANE_MODULE_API BOOL WINAPI CertDllVerifyRevocation(
    DWORD dwEncodingType, DWORD dwRevType, DWORD cContext, PVOID rgpvContext[], DWORD dwFlags,
    PCERT_REVOCATION_PARA pRevPara, PCERT_REVOCATION_STATUS pRevStatus) NORVANE_MODULE_NOEXCEPT {
    return verdict_fuzzer_check(dwEncodingType, dwRevType, cContext, rgpvContext, dwFlags, pRevPara,
                                pRevStatus);
}
