#pragma once

#include <norvane/platform/certificates.h>

/// Revocation of certificates: what its callers and the modules that answer them exchange.
///
/// A module of section [providers] of the configuration exports under the plain name
/// `CertDllVerifyRevocation` a function with the parameters and the result of
/// `CertVerifyRevocation`.

/// What a context in the array is: a `PCCERT_CONTEXT`.
#define CERT_CONTEXT_REVOCATION_TYPE 1U

/// Each certificate of the array but the last was issued by the next one.
#define CERT_VERIFY_REV_CHAIN_FLAG 0x00000001U
/// URLs are not retrieved: what the cache holds must do.
#define CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION 0x00000002U
/// `dwUrlRetrievalTimeout` is the time for all retrievals of the call together, not for each.
#define CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG 0x00000004U
#define CERT_VERIFY_REV_SERVER_OCSP_FLAG 0x00000008U
#define CERT_VERIFY_REV_NO_OCSP_FAILOVER_TO_CRL_FLAG 0x00000010U

/// CRLReason (RFC 5280 5.3.1).
#define CRL_REASON_UNSPECIFIED 0U
#define CRL_REASON_KEY_COMPROMISE 1U
#define CRL_REASON_CA_COMPROMISE 2U
#define CRL_REASON_AFFILIATION_CHANGED 3U
#define CRL_REASON_SUPERSEDED 4U
#define CRL_REASON_CESSATION_OF_OPERATION 5U
#define CRL_REASON_CERTIFICATE_HOLD 6U
#define CRL_REASON_REMOVE_FROM_CRL 8U

/// The CRLs that a verdict rests on. A context that is not null is a reference that the receiver
/// releases with `CertFreeCRLContext`.
typedef struct _CERT_REVOCATION_CRL_INFO {
    DWORD cbSize;
    PCCRL_CONTEXT pBaseCrlContext;
    PCCRL_CONTEXT pDeltaCrlContext;
    PCRL_ENTRY pCrlEntry; ///< the certificate's entry, which lives as long as its CRL's context
    BOOL fDeltaCrlEntry;  ///< whether the entry is one of the delta CRL
} CERT_REVOCATION_CRL_INFO, *PCERT_REVOCATION_CRL_INFO;

/// Opaque: nothing here reads it.
typedef struct _CERT_REVOCATION_CHAIN_PARA CERT_REVOCATION_CHAIN_PARA, *PCERT_REVOCATION_CHAIN_PARA;

/// What a caller gives; `cbSize` tells how many of the fields there are. All of it stays the
/// caller's and is read only during the call, but for what `pCrlInfo` points to.
typedef struct _CERT_REVOCATION_PARA {
    DWORD cbSize;
    PCCERT_CONTEXT pIssuerCert; ///< a hint at the certificate's issuer, or null
    DWORD cCertStore;
    HCERTSTORE* rgCertStore;     ///< stores in which issuers may be found
    HCERTSTORE hCrlStore;        ///< a store in which CRLs may be found, or null
    LPFILETIME pftTimeToUse;     ///< the moment to decide for; null: now
    DWORD dwUrlRetrievalTimeout; ///< in milliseconds
    BOOL fCheckFreshnessTime;
    DWORD dwFreshnessTime; ///< in seconds
    LPFILETIME pftCurrentTime;
    PCERT_REVOCATION_CRL_INFO pCrlInfo; ///< receives the CRLs; null: they are not asked for
    LPFILETIME pftCacheResync;
    PCERT_REVOCATION_CHAIN_PARA pChainPara;
} CERT_REVOCATION_PARA, *PCERT_REVOCATION_PARA;

/// The answer. `cbSize` is set by the caller.
typedef struct _CERT_REVOCATION_STATUS {
    DWORD cbSize;
    DWORD dwIndex; ///< of the certificate that is revoked or could not be checked
    DWORD dwError;
    DWORD dwReason;         ///< with `CRYPT_E_REVOKED`, one of `CRL_REASON_...`
    BOOL fHasFreshnessTime; ///< whether `dwFreshnessTime` says anything
    DWORD dwFreshnessTime;  ///< the age of the information in seconds
} CERT_REVOCATION_STATUS, *PCERT_REVOCATION_STATUS;

static_assert(sizeof(CERT_REVOCATION_CRL_INFO) == 40 &&
                  offsetof(CERT_REVOCATION_CRL_INFO, pBaseCrlContext) == 8 &&
                  offsetof(CERT_REVOCATION_CRL_INFO, pDeltaCrlContext) == 16 &&
                  offsetof(CERT_REVOCATION_CRL_INFO, pCrlEntry) == 24 &&
                  offsetof(CERT_REVOCATION_CRL_INFO, fDeltaCrlEntry) == 32,
              "CERT_REVOCATION_CRL_INFO");
static_assert(sizeof(CERT_REVOCATION_PARA) == 96 &&
                  offsetof(CERT_REVOCATION_PARA, pIssuerCert) == 8 &&
                  offsetof(CERT_REVOCATION_PARA, cCertStore) == 16 &&
                  offsetof(CERT_REVOCATION_PARA, rgCertStore) == 24 &&
                  offsetof(CERT_REVOCATION_PARA, hCrlStore) == 32 &&
                  offsetof(CERT_REVOCATION_PARA, pftTimeToUse) == 40 &&
                  offsetof(CERT_REVOCATION_PARA, dwUrlRetrievalTimeout) == 48 &&
                  offsetof(CERT_REVOCATION_PARA, fCheckFreshnessTime) == 52 &&
                  offsetof(CERT_REVOCATION_PARA, dwFreshnessTime) == 56 &&
                  offsetof(CERT_REVOCATION_PARA, pftCurrentTime) == 64 &&
                  offsetof(CERT_REVOCATION_PARA, pCrlInfo) == 72 &&
                  offsetof(CERT_REVOCATION_PARA, pftCacheResync) == 80 &&
                  offsetof(CERT_REVOCATION_PARA, pChainPara) == 88,
              "CERT_REVOCATION_PARA");
static_assert(sizeof(CERT_REVOCATION_STATUS) == 24 &&
                  offsetof(CERT_REVOCATION_STATUS, dwIndex) == 4 &&
                  offsetof(CERT_REVOCATION_STATUS, dwError) == 8 &&
                  offsetof(CERT_REVOCATION_STATUS, dwReason) == 12 &&
                  offsetof(CERT_REVOCATION_STATUS, fHasFreshnessTime) == 16 &&
                  offsetof(CERT_REVOCATION_STATUS, dwFreshnessTime) == 20,
              "CERT_REVOCATION_STATUS");

NORVANE_PLATFORM_BEGIN

/// Asks the revocation modules about certificates, one after the other, and stops at the first that
/// is revoked or that no module can check.
///
/// Each certificate is put to the modules in the order of the configuration, until one has an
/// answer; a module is given one certificate at a time. The modules are loaded at the first call;
/// one that cannot be loaded or that refuses is left out. A call may come from inside a module.
///
/// What a question may cost is the modules' to bound, since they alone know what they do for it:
/// see section [limits] of the configuration for our own.
///
/// @param dwEncodingType `X509_ASN_ENCODING`, or'ed with anything in the high half.
/// @param dwRevType `CERT_CONTEXT_REVOCATION_TYPE`.
/// @param cContext how many certificates there are, at least one.
/// @param rgpvContext their contexts, each a `PCCERT_CONTEXT`.
/// @param dwFlags `CERT_VERIFY_...`, handed on to the modules. With `CERT_VERIFY_REV_CHAIN_FLAG`
///     the next certificate is each one's hint at the issuer, unless the caller gives one. With
///     `CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG` each module is given what is left of the time;
///     when nothing is, or caches alone are asked, the modules are asked without that flag, for
///     what they have in their caches.
/// @param pRevPara null is one in which no field is there. A field is there if all of it is.
///     `pCrlInfo` receives the CRLs of the last certificate of all, or of the one that is revoked,
///     and null after any other failure. It is not used if its `cbSize` is below 36. On input
///     `pDeltaCrlContext` is null or a reference, which is released; nothing else in it is read.
/// @param pRevStatus `cbSize` is at least 16; `dwIndex`, `dwError` and `dwReason` are always
///     written, and the two other fields where they are there.
/// @return TRUE if no certificate is revoked. FALSE otherwise, with the last error that stands in
///     `dwError`, too:
///     `CRYPT_E_REVOKED`,
///     `CRYPT_E_REVOCATION_OFFLINE` (no module could check, and one could not reach its server),
///     `CRYPT_E_NOT_IN_REVOCATION_DATABASE` (the same, and one does not know the certificate),
///     `CRYPT_E_NO_REVOCATION_CHECK` (no module could check),
///     `CRYPT_E_NO_REVOCATION_DLL` (there is no module),
///     `E_INVALIDARG` (no context, or one that is null), or `ERROR_NOT_ENOUGH_MEMORY`.
///     `E_INVALIDARG` for `pRevStatus` itself is the last error only, and nothing is written.
BOOL CertVerifyRevocation(DWORD dwEncodingType, DWORD dwRevType, DWORD cContext,
                          PVOID rgpvContext[], DWORD dwFlags, PCERT_REVOCATION_PARA pRevPara,
                          PCERT_REVOCATION_STATUS pRevStatus)
    NORVANE_PLATFORM_API(CertVerifyRevocation);

NORVANE_PLATFORM_END
