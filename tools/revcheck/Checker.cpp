#include "Checker.h"

#include "Times.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace norvane {
namespace {

Status status_of(DWORD error) noexcept {
    switch (error) {
    case ERROR_SUCCESS:
        return Status::good;
    case CRYPT_E_REVOKED:
        return Status::revoked;
    default:
        return Status::no_check;
    }
}

bool is_want_of_memory(DWORD error) noexcept {
    constexpr DWORD wants[] = {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY, E_OUTOFMEMORY,
                               NTE_NO_MEMORY, CRYPT_E_ASN1_MEMORY};
    return std::ranges::find(wants, error) != std::end(wants);
}

DWORD flags_of(const Options& options) noexcept {
    return (options.cache_only ? CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION : 0U) |
           (options.accumulative ? CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG : 0U);
}

} // namespace

Checker::Checker(const Options& options, const Stores& stores)
    : options_(options), stores_(stores) {}

std::vector<Verdict> verdicts_of(CallResult result) {
    std::vector<Verdict> verdicts(result.index);
    for (Verdict& good : verdicts) {
        good.status = Status::good;
        good.time = result.verdict.time;
    }
    verdicts.push_back(std::move(result.verdict));
    return verdicts;
}

CallResult Checker::check(std::span<const PCCERT_CONTEXT> certificates,
                          const std::optional<FILETIME>& moment) const {
    constexpr DWORD default_timeout_ms = 5000;
    std::vector<HCERTSTORE> stores;
    for (const StoreHolder& store : stores_.certs) {
        stores.push_back(store.get());
    }
    std::vector<void*> contexts;
    for (const PCCERT_CONTEXT certificate : certificates) {
        contexts.push_back(const_cast<CERT_CONTEXT*>(certificate));
    }
    FILETIME time = moment.value_or(now());

    CERT_REVOCATION_CRL_INFO crl_info{};
    crl_info.cbSize = sizeof crl_info;
    CERT_REVOCATION_PARA parameters{};
    parameters.cbSize = sizeof parameters;
    parameters.pIssuerCert = stores_.issuer.get();
    parameters.cCertStore = static_cast<DWORD>(stores.size());
    parameters.rgCertStore = stores.data();
    parameters.hCrlStore = stores_.crls.get();
    parameters.pftTimeToUse = moment ? &time : nullptr;
    parameters.dwUrlRetrievalTimeout = options_.timeout_ms.value_or(default_timeout_ms);
    parameters.pCrlInfo = &crl_info;
    CERT_REVOCATION_STATUS status{};
    status.cbSize = sizeof status;

    const BOOL good = CertVerifyRevocation(X509_ASN_ENCODING, CERT_CONTEXT_REVOCATION_TYPE,
                                           static_cast<DWORD>(contexts.size()), contexts.data(),
                                           flags_of(options_), &parameters, &status);
    const DWORD error = good != FALSE ? ERROR_SUCCESS : GetLastError();
    const DWORD process_failure = NorvaneTakeProcessFailure();
    if (is_want_of_memory(error) || is_want_of_memory(process_failure)) {
        throw std::bad_alloc();
    }

    CallResult result;
    result.index = good != FALSE ? certificates.size() - 1 : status.dwIndex;
    Verdict& verdict = result.verdict;
    verdict.error = error;
    verdict.process_failure = process_failure;
    verdict.status = good != FALSE ? Status::good : status_of(status.dwError);
    verdict.reason_code = status.dwReason;
    if (status.fHasFreshnessTime != FALSE) {
        verdict.freshness_seconds = status.dwFreshnessTime;
    }
    verdict.base_crl.reset(crl_info.pBaseCrlContext);
    verdict.delta_crl.reset(crl_info.pDeltaCrlContext);
    verdict.entry = crl_info.pCrlEntry;
    verdict.entry_in_delta = crl_info.fDeltaCrlEntry != FALSE;
    verdict.time = time;
    return result;
}

} // namespace norvane
