#pragma once

#include <norvane/platform/clock.h>
#include <norvane/platform/encoding.h>
#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// Certificates and CRLs as the platform shows them: the encoded bytes beside the fields that
/// programs read. All of a context belongs to the context and lives as long as it; none of it may
/// be written to.

typedef struct CRYPTOAPI_BLOB CRYPT_OBJID_BLOB, *PCRYPT_OBJID_BLOB;
typedef struct CRYPTOAPI_BLOB CRYPT_HASH_BLOB, *PCRYPT_HASH_BLOB;
typedef struct CRYPTOAPI_BLOB CERT_NAME_BLOB, *PCERT_NAME_BLOB;

/// A BIT STRING: the first bit is the most significant one of the first byte, and the last
/// `cUnusedBits` (0 to 7) bits of the last byte are not part of it.
typedef struct CRYPT_BIT_BLOB {
    DWORD cbData;
    BYTE* pbData;
    DWORD cUnusedBits;
} CRYPT_BIT_BLOB, *PCRYPT_BIT_BLOB;

/// The identifier as dotted decimal text, and the encoded parameters, empty if absent. A text is
/// empty if an arc exceeds 128 bits.
typedef struct CRYPT_ALGORITHM_IDENTIFIER {
    LPSTR pszObjId;
    CRYPT_OBJID_BLOB Parameters;
} CRYPT_ALGORITHM_IDENTIFIER, *PCRYPT_ALGORITHM_IDENTIFIER;

typedef struct CERT_PUBLIC_KEY_INFO {
    CRYPT_ALGORITHM_IDENTIFIER Algorithm;
    CRYPT_BIT_BLOB PublicKey;
} CERT_PUBLIC_KEY_INFO, *PCERT_PUBLIC_KEY_INFO;

/// `Value` is what the OCTET STRING of extnValue wraps.
typedef struct CERT_EXTENSION {
    LPSTR pszObjId;
    BOOL fCritical;
    CRYPT_OBJID_BLOB Value;
} CERT_EXTENSION, *PCERT_EXTENSION;

/// The version of a certificate or CRL is the number that is encoded: 0 for v1.
#define CERT_V1 0U
#define CERT_V2 1U
#define CERT_V3 2U
#define CRL_V1 0U
#define CRL_V2 1U

/// TBSCertificate (RFC 5280 4.1). The serial number is its content octets, least significant byte
/// first. Names are encoded. A moment before 1601, where a FILETIME begins, reads as 0.
typedef struct CERT_INFO {
    DWORD dwVersion;
    CRYPT_INTEGER_BLOB SerialNumber;
    CRYPT_ALGORITHM_IDENTIFIER SignatureAlgorithm;
    CERT_NAME_BLOB Issuer;
    FILETIME NotBefore;
    FILETIME NotAfter;
    CERT_NAME_BLOB Subject;
    CERT_PUBLIC_KEY_INFO SubjectPublicKeyInfo;
    CRYPT_BIT_BLOB IssuerUniqueId;
    CRYPT_BIT_BLOB SubjectUniqueId;
    DWORD cExtension;
    PCERT_EXTENSION rgExtension;
} CERT_INFO, *PCERT_INFO;

/// An element of revokedCertificates (RFC 5280 5.1.2.6). A date that is none reads as 0.
typedef struct CRL_ENTRY {
    CRYPT_INTEGER_BLOB SerialNumber;
    FILETIME RevocationDate;
    DWORD cExtension;
    PCERT_EXTENSION rgExtension;
} CRL_ENTRY, *PCRL_ENTRY;

/// TBSCertList (RFC 5280 5.1). An absent nextUpdate is 0. On Linux the entries are counted but not
/// laid out: `rgCRLEntry` is null whatever the count is, and `CertFindCertificateInCRL` finds them.
typedef struct CRL_INFO {
    DWORD dwVersion;
    CRYPT_ALGORITHM_IDENTIFIER SignatureAlgorithm;
    CERT_NAME_BLOB Issuer;
    FILETIME ThisUpdate;
    FILETIME NextUpdate;
    DWORD cCRLEntry;
    PCRL_ENTRY rgCRLEntry;
    DWORD cExtension;
    PCERT_EXTENSION rgExtension;
} CRL_INFO, *PCRL_INFO;

/// A certificate store; see <norvane/platform/stores.h>.
typedef void* HCERTSTORE;

/// `hCertStore` is the store that holds the certificate, or null; it stays valid as long as the
/// context, and is no reference of its own. `dwCertEncodingType` is `X509_ASN_ENCODING`.
typedef struct _CERT_CONTEXT {
    DWORD dwCertEncodingType;
    BYTE* pbCertEncoded;
    DWORD cbCertEncoded;
    PCERT_INFO pCertInfo;
    HCERTSTORE hCertStore;
} CERT_CONTEXT, *PCERT_CONTEXT;
typedef const CERT_CONTEXT* PCCERT_CONTEXT;

typedef struct _CRL_CONTEXT {
    DWORD dwCertEncodingType;
    BYTE* pbCrlEncoded;
    DWORD cbCrlEncoded;
    PCRL_INFO pCrlInfo;
    HCERTSTORE hCertStore;
} CRL_CONTEXT, *PCRL_CONTEXT;
typedef const CRL_CONTEXT* PCCRL_CONTEXT;

static_assert(sizeof(CRYPT_BIT_BLOB) == 24 && offsetof(CRYPT_BIT_BLOB, cUnusedBits) == 16,
              "CRYPT_BIT_BLOB");
static_assert(sizeof(CRYPT_ALGORITHM_IDENTIFIER) == 24 &&
                  offsetof(CRYPT_ALGORITHM_IDENTIFIER, Parameters) == 8,
              "CRYPT_ALGORITHM_IDENTIFIER");
static_assert(sizeof(CERT_PUBLIC_KEY_INFO) == 48 && offsetof(CERT_PUBLIC_KEY_INFO, PublicKey) == 24,
              "CERT_PUBLIC_KEY_INFO");
static_assert(sizeof(CERT_EXTENSION) == 32 && offsetof(CERT_EXTENSION, fCritical) == 8 &&
                  offsetof(CERT_EXTENSION, Value) == 16,
              "CERT_EXTENSION");
static_assert(sizeof(CERT_INFO) == 208 && offsetof(CERT_INFO, SerialNumber) == 8 &&
                  offsetof(CERT_INFO, SignatureAlgorithm) == 24 &&
                  offsetof(CERT_INFO, Issuer) == 48 && offsetof(CERT_INFO, NotBefore) == 64 &&
                  offsetof(CERT_INFO, NotAfter) == 72 && offsetof(CERT_INFO, Subject) == 80 &&
                  offsetof(CERT_INFO, SubjectPublicKeyInfo) == 96 &&
                  offsetof(CERT_INFO, IssuerUniqueId) == 144 &&
                  offsetof(CERT_INFO, SubjectUniqueId) == 168 &&
                  offsetof(CERT_INFO, cExtension) == 192 && offsetof(CERT_INFO, rgExtension) == 200,
              "CERT_INFO");
static_assert(sizeof(CRL_ENTRY) == 40 && offsetof(CRL_ENTRY, RevocationDate) == 16 &&
                  offsetof(CRL_ENTRY, cExtension) == 24 && offsetof(CRL_ENTRY, rgExtension) == 32,
              "CRL_ENTRY");
static_assert(sizeof(CRL_INFO) == 96 && offsetof(CRL_INFO, SignatureAlgorithm) == 8 &&
                  offsetof(CRL_INFO, Issuer) == 32 && offsetof(CRL_INFO, ThisUpdate) == 48 &&
                  offsetof(CRL_INFO, NextUpdate) == 56 && offsetof(CRL_INFO, cCRLEntry) == 64 &&
                  offsetof(CRL_INFO, rgCRLEntry) == 72 && offsetof(CRL_INFO, cExtension) == 80 &&
                  offsetof(CRL_INFO, rgExtension) == 88,
              "CRL_INFO");
static_assert(sizeof(CERT_CONTEXT) == 40 && offsetof(CERT_CONTEXT, pbCertEncoded) == 8 &&
                  offsetof(CERT_CONTEXT, cbCertEncoded) == 16 &&
                  offsetof(CERT_CONTEXT, pCertInfo) == 24 &&
                  offsetof(CERT_CONTEXT, hCertStore) == 32,
              "CERT_CONTEXT");
static_assert(sizeof(CRL_CONTEXT) == 40 && offsetof(CRL_CONTEXT, pbCrlEncoded) == 8 &&
                  offsetof(CRL_CONTEXT, cbCrlEncoded) == 16 &&
                  offsetof(CRL_CONTEXT, pCrlInfo) == 24 && offsetof(CRL_CONTEXT, hCertStore) == 32,
              "CRL_CONTEXT");

NORVANE_PLATFORM_BEGIN

/// Makes a context that belongs to no store over a copy of an encoded certificate. As long as
/// one over the same bytes lives, it is that one again with one reference more; so the call costs
/// no memory then, and contexts over equal bytes have equal addresses.
///
/// BER is taken as well as DER; `pbCertEncoded` of the context are the bytes as given.
///
/// @param dwCertEncodingType the low half must be `X509_ASN_ENCODING`; the high half is ignored.
/// @param pbCertEncoded the certificate (RFC 5280 4.1), with nothing behind it.
/// @param cbCertEncoded its length in bytes.
/// @return the context, to be released with `CertFreeCertificateContext`. Null on failure, with
///     the last error `E_INVALIDARG`, `ERROR_NOT_ENOUGH_MEMORY`, or for the encoded bytes
///     `CRYPT_E_ASN1_EOD` (they end too early), `CRYPT_E_ASN1_BADTAG`, `CRYPT_E_ASN1_CORRUPT` (a
///     value or a time that is none), `CRYPT_E_ASN1_LARGE` (nested too deeply) or
///     `CRYPT_E_ASN1_NOEOD` (bytes behind it).
PCCERT_CONTEXT CertCreateCertificateContext(DWORD dwCertEncodingType, const BYTE* pbCertEncoded,
                                            DWORD cbCertEncoded)
    NORVANE_PLATFORM_API(CertCreateCertificateContext);

/// One reference more. Null gives null; there is no failure.
PCCERT_CONTEXT CertDuplicateCertificateContext(PCCERT_CONTEXT pCertContext)
    NORVANE_PLATFORM_API(CertDuplicateCertificateContext);

/// Gives a reference back, in any thread; with the last one goes the context. Null is allowed.
///
/// @return TRUE, always.
BOOL CertFreeCertificateContext(PCCERT_CONTEXT pCertContext)
    NORVANE_PLATFORM_API(CertFreeCertificateContext);

/// `CertCreateCertificateContext` for a CRL (RFC 5280 5.1), with the same failures. The dates of
/// the entries are not looked at.
PCCRL_CONTEXT CertCreateCRLContext(DWORD dwCertEncodingType, const BYTE* pbCrlEncoded,
                                   DWORD cbCrlEncoded) NORVANE_PLATFORM_API(CertCreateCRLContext);

/// One reference more. Null gives null; there is no failure.
PCCRL_CONTEXT CertDuplicateCRLContext(PCCRL_CONTEXT pCrlContext)
    NORVANE_PLATFORM_API(CertDuplicateCRLContext);

/// Gives a reference back, in any thread; with the last one goes the context. Null is allowed.
///
/// @return TRUE, always.
BOOL CertFreeCRLContext(PCCRL_CONTEXT pCrlContext) NORVANE_PLATFORM_API(CertFreeCRLContext);

/// Looks for the certificate's serial number in a CRL, whoever issued either. Sign octets that a
/// number does not need make no difference. Of several entries the first is found.
///
/// @param pCert a context; only the serial number in `pCertInfo` is read.
/// @param pCrlContext a context that the platform gave out.
/// @param dwFlags 0.
/// @param pvReserved null.
/// @param ppCrlEntry receives the entry, which lives as long as the CRL context, or null if the
///     number is not listed. Null on failure.
/// @return TRUE whether or not the number is listed. FALSE with the last error `E_INVALIDARG` or
///     `ERROR_NOT_ENOUGH_MEMORY`.
BOOL CertFindCertificateInCRL(PCCERT_CONTEXT pCert, PCCRL_CONTEXT pCrlContext, DWORD dwFlags,
                              void* pvReserved, PCRL_ENTRY* ppCrlEntry)
    NORVANE_PLATFORM_API(CertFindCertificateInCRL);

NORVANE_PLATFORM_END
