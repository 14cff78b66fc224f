#include "platform/dispatch/ModuleParameters.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace norvane {
namespace {

constexpr std::size_t word = sizeof(DWORD);
constexpr std::size_t pointer = sizeof(void*);

/// Where the fields of the structure end.
constexpr std::array<std::size_t, 13> field_ends = {
    offsetof(CERT_REVOCATION_PARA, cbSize) + word,
    offsetof(CERT_REVOCATION_PARA, pIssuerCert) + pointer,
    offsetof(CERT_REVOCATION_PARA, cCertStore) + word,
    offsetof(CERT_REVOCATION_PARA, rgCertStore) + pointer,
    offsetof(CERT_REVOCATION_PARA, hCrlStore) + pointer,
    offsetof(CERT_REVOCATION_PARA, pftTimeToUse) + pointer,
    offsetof(CERT_REVOCATION_PARA, dwUrlRetrievalTimeout) + word,
    offsetof(CERT_REVOCATION_PARA, fCheckFreshnessTime) + word,
    offsetof(CERT_REVOCATION_PARA, dwFreshnessTime) + word,
    offsetof(CERT_REVOCATION_PARA, pftCurrentTime) + pointer,
    offsetof(CERT_REVOCATION_PARA, pCrlInfo) + pointer,
    offsetof(CERT_REVOCATION_PARA, pftCacheResync) + pointer,
    offsetof(CERT_REVOCATION_PARA, pChainPara) + pointer,
};

/// What every module may count on: the structure without its extra fields.
constexpr std::size_t least_size = offsetof(CERT_REVOCATION_PARA, pftTimeToUse) + pointer;
constexpr std::size_t least_crl_info_size =
    offsetof(CERT_REVOCATION_CRL_INFO, fDeltaCrlEntry) + word;

bool has_budget(DWORD flags) noexcept {
    return (flags & CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG) != 0;
}

void release(PCCRL_CONTEXT& context) noexcept {
    CertFreeCRLContext(context);
    context = nullptr;
}

} // namespace

ModuleParameters::ModuleParameters(const CERT_REVOCATION_PARA* caller, DWORD flags) noexcept
    : caller_flags_(flags), begin_ms_(has_budget(flags) ? GetTickCount64() : 0) {
    std::size_t size = 0;
    if (caller != nullptr) {
        const auto beyond = std::ranges::upper_bound(field_ends, caller->cbSize);
        size = beyond == field_ends.begin() ? 0 : *std::prev(beyond);
        std::memcpy(&caller_, caller, size);
    }
    caller_.cbSize = static_cast<DWORD>(std::max(size, least_size));
    if (caller_.pCrlInfo != nullptr) {
        if (caller_.pCrlInfo->cbSize < least_crl_info_size) {
            caller_.pCrlInfo = nullptr;
        } else {
            release(caller_.pCrlInfo->pDeltaCrlContext);
        }
    }
}

ModuleParameters::~ModuleParameters() {
    if (!crls_are_kept_) {
        release_crls();
    }
    if (CERT_REVOCATION_CRL_INFO* const info = caller_.pCrlInfo; info != nullptr) {
        info->pBaseCrlContext = crls_.pBaseCrlContext;
        info->pDeltaCrlContext = crls_.pDeltaCrlContext;
        info->pCrlEntry = crls_.pCrlEntry;
        info->fDeltaCrlEntry = crls_.fDeltaCrlEntry;
    }
}

void ModuleParameters::make_out(PCCERT_CONTEXT issuer) noexcept {
    release_crls();
    para_ = caller_;
    flags_ = caller_flags_;
    if (para_.pIssuerCert == nullptr) {
        para_.pIssuerCert = issuer;
    }
    if (para_.pCrlInfo != nullptr) {
        para_.pCrlInfo = &crls_;
    }
    limit_time();
}

void ModuleParameters::release_crls() noexcept {
    release(crls_.pBaseCrlContext);
    release(crls_.pDeltaCrlContext);
    crls_ = {.cbSize = sizeof crls_,
             .pBaseCrlContext = nullptr,
             .pDeltaCrlContext = nullptr,
             .pCrlEntry = nullptr,
             .fDeltaCrlEntry = FALSE};
    crls_are_kept_ = false;
}

void ModuleParameters::limit_time() noexcept {
    if (!has_budget(flags_)) {
        return;
    }
    if (para_.dwUrlRetrievalTimeout != 0) { // 0 is the module's to understand.
        para_.dwUrlRetrievalTimeout = time_left(para_.dwUrlRetrievalTimeout);
        if (para_.dwUrlRetrievalTimeout == 0) {
            flags_ |= CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION;
        }
    }
    if ((flags_ & CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION) != 0) {
        // Without the wire there is no budget, and one of nothing would shut the cache, too.
        flags_ &= ~CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG;
    }
}

DWORD ModuleParameters::time_left(DWORD budget) const noexcept {
    const ULONGLONG passed = GetTickCount64() - begin_ms_;
    return passed < budget ? static_cast<DWORD>(budget - passed) : 0;
}

} // namespace norvane
