#pragma once

#include "items/ItemSets.h"

namespace norvane {

/// What a run has learnt about a certificate, kept beside it in the cache; also the result of a
/// run. The pointers lead to items of the run's caches.
struct CertificateCacheInfo {
    CertificateCacheInfo() = default;
    CertificateCacheInfo(const CertificateCacheInfo&) = default;
    CertificateCacheInfo(CertificateCacheInfo&&) = default;
    CertificateCacheInfo& operator=(const CertificateCacheInfo&) = default;
    CertificateCacheInfo& operator=(CertificateCacheInfo&&) = default;
    virtual ~CertificateCacheInfo() = default;

    bool trusted = false;                ///< Found in a Root store.
    bool revocation_good = false;        ///< Fully decided as good; need not be decided again.
    CrlItemSet good_crls;                ///< The CRLs handed to the walk that set revocation_good.
    CertificateItemSet verified_issuers; ///< Issuers that path construction accepted before.
    CrlPairSet crl_pairs;                ///< Every pair consulted for this certificate.
    /// Of the pair whose entry decided a revoked status; null while none has.
    const CRLItem* deciding_base_crl = nullptr;
    const CRLItem* deciding_delta_crl = nullptr; ///< Null if the pair has no delta.
};

/// What a run has learnt about a CRL.
struct CRLCacheInfo {
    CRLCacheInfo() = default;
    CRLCacheInfo(const CRLCacheInfo&) = default;
    CRLCacheInfo(CRLCacheInfo&&) = default;
    CRLCacheInfo& operator=(const CRLCacheInfo&) = default;
    CRLCacheInfo& operator=(CRLCacheInfo&&) = default;
    virtual ~CRLCacheInfo() = default;

    /// The certificate with which the CRL's signature was validated, of the run's cache; or null.
    const CertificateItem* crl_issuer = nullptr;
};

} // namespace norvane
