#include "provider/RevocationParameters.h"

#include <cstddef>

namespace norvane {
namespace {

static_assert(offsetof(CERT_REVOCATION_PARA, pIssuerCert) == 8);
static_assert(offsetof(CERT_REVOCATION_PARA, cCertStore) == 16);
static_assert(offsetof(CERT_REVOCATION_PARA, rgCertStore) == 24);
static_assert(offsetof(CERT_REVOCATION_PARA, hCrlStore) == 32);
static_assert(offsetof(CERT_REVOCATION_PARA, pftTimeToUse) == 40);
static_assert(offsetof(CERT_REVOCATION_PARA, dwUrlRetrievalTimeout) == 48);
static_assert(offsetof(CERT_REVOCATION_PARA, pCrlInfo) == 72);
static_assert(offsetof(CERT_REVOCATION_STATUS, dwReason) == 12);
static_assert(offsetof(CERT_REVOCATION_STATUS, fHasFreshnessTime) == 16);
static_assert(offsetof(CERT_REVOCATION_STATUS, dwFreshnessTime) == 20);
static_assert(offsetof(CERT_REVOCATION_CRL_INFO, fDeltaCrlEntry) == 32);

/// A field counts as there if the structure reaches beyond its beginning, be it by one byte.
template <class Structure>
bool reaches_beyond(const Structure& structure, std::size_t offset) {
    return structure.cbSize > offset;
}

/// CRLs are handed out only to a caller who knows all fields that tell of them.
CERT_REVOCATION_CRL_INFO* usable(CERT_REVOCATION_CRL_INFO* info) {
    return info != nullptr &&
                   reaches_beyond(*info, offsetof(CERT_REVOCATION_CRL_INFO, fDeltaCrlEntry))
               ? info
               : nullptr;
}

} // namespace

RevocationParameters::RevocationParameters(const CERT_REVOCATION_PARA* para) {
    if (para == nullptr) {
        return;
    }
    if (reaches_beyond(*para, offsetof(CERT_REVOCATION_PARA, pIssuerCert))) {
        issuer_hint = para->pIssuerCert;
    }
    if (reaches_beyond(*para, offsetof(CERT_REVOCATION_PARA, rgCertStore)) &&
        para->rgCertStore != nullptr) {
        cert_stores = {para->rgCertStore, para->cCertStore};
    }
    if (reaches_beyond(*para, offsetof(CERT_REVOCATION_PARA, hCrlStore))) {
        crl_store = para->hCrlStore;
    }
    if (reaches_beyond(*para, offsetof(CERT_REVOCATION_PARA, pftTimeToUse))) {
        time_to_use = para->pftTimeToUse;
    }
    if (reaches_beyond(*para, offsetof(CERT_REVOCATION_PARA, dwUrlRetrievalTimeout))) {
        timeout = para->dwUrlRetrievalTimeout;
    }
    if (reaches_beyond(*para, offsetof(CERT_REVOCATION_PARA, pCrlInfo))) {
        crl_info = usable(para->pCrlInfo);
    }
}

FreshnessFields::FreshnessFields(CERT_REVOCATION_STATUS& status) {
    if (reaches_beyond(status, offsetof(CERT_REVOCATION_STATUS, fHasFreshnessTime))) {
        has_freshness_time = &status.fHasFreshnessTime;
    }
    if (reaches_beyond(status, offsetof(CERT_REVOCATION_STATUS, dwFreshnessTime))) {
        freshness_time = &status.dwFreshnessTime;
    }
}

bool is_large_enough(const CERT_REVOCATION_STATUS& status) {
    return reaches_beyond(status, offsetof(CERT_REVOCATION_STATUS, dwReason));
}

} // namespace norvane
