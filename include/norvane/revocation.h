#pragma once

#include <norvane/wincrypt.h>

/// The exports of the module norvane_revocation, for C11 and C++20, under the plain names by which
/// they are looked up: norvane_revocation.so in folder "norvane" beside libnorvane_platform.so, or
/// norvane_revocation.dll. A program may load the module (dlopen, LoadLibrary) or, on Linux, be
/// linked with the file itself.
///
/// What holds for every one of them:
///  - No exception leaves it. A failure is told by FALSE and the calling thread's `GetLastError`.
///  - It may be called from any thread at any time.
///  - Pointers must not be null, unless the function's own text gives null a meaning. Input is read
///    only during the call.
///  - Memory handed out is released with `LocalFree`.

#ifdef _WIN32
#define NORVANE_MODULE_API
#else
#define NORVANE_MODULE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define NORVANE_MODULE_NOEXCEPT noexcept
extern "C" {
#else
#define NORVANE_MODULE_NOEXCEPT
#endif

/// Decides whether certificates have been revoked, one after the other, and stops at the first that
/// is revoked or cannot be checked. Each is decided on its own: by CRLs of the caller's stores, of
/// the system store "CA" and of its distribution points, whose signers lead to the system store
/// "Root". Programs call this through `CertVerifyRevocation` rather than directly.
///
/// Of the caller's structures a field is there if `cbSize` exceeds its offset, be it by one byte.
///
/// @param dwEncodingType `X509_ASN_ENCODING` in the low half; the high half is not looked at.
/// @param dwRevType `CERT_CONTEXT_REVOCATION_TYPE`.
/// @param cContext how many certificates there are, at least one.
/// @param rgpvContext their contexts, each a `PCCERT_CONTEXT`.
/// @param dwFlags `CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION` and
///     `CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG` matter.
/// @param pRevPara null is one in which no field is there. Of it `pIssuerCert` (its store too),
///     `rgCertStore` (no null in it), `hCrlStore` (null: the "CA" store), `pftTimeToUse` (null: the
///     present), `dwUrlRetrievalTimeout` (milliseconds, 5000 if it is not there) and `pCrlInfo`
///     are used; the wishes for freshness are not.
///     The time-out is for each URL, and 0 is the platform's default. With the flag for
///     accumulative time-outs it is for all CRLs of one certificate together, and 0 lets none be
///     retrieved, not even from the cache. Issuers by authority information access have the whole
///     time-out for each URL either way, and do not count. With 0x7FFFFFFF and more a certificate
///     that names URLs cannot be checked. `pCrlInfo` is used if its `cbSize` exceeds 32. On input
///     its `pDeltaCrlContext` is null or a context, which is released; the rest is not read. On
///     return it describes the last certificate that was looked at, and its contexts are the
///     caller's to release; after a failure other than `CRYPT_E_REVOKED` they are null. Refused
///     arguments (`E_INVALIDARG`, or an encoding or a type that is not for this module) leave all
///     of it as it came, the delta context unreleased.
/// @param pRevStatus `cbSize` exceeds 12. `dwError` is always written; refused arguments leave the
///     rest as it came. Otherwise `dwIndex` is that of the last certificate that was looked at, and
///     `dwReason` is 0 unless that one is revoked. `fHasFreshnessTime` and `dwFreshnessTime`, where
///     they are there, tell the age in seconds of the oldest information about the last certificate
///     whose run came to an end. One that ends with an exception, such as for lack of memory,
///     leaves them as the certificate before it did, or 0.
/// @return TRUE if no certificate is revoked. FALSE otherwise, with the last error, which stands in
///     `dwError` too: `CRYPT_E_REVOKED` with a CRLReason (RFC 5280 5.3.1) in `dwReason`,
///     `CRYPT_E_NO_REVOCATION_CHECK`, or `E_INVALIDARG` without contexts. `E_INVALIDARG` for
///     `pRevStatus` itself is the last error only. One oddity stands: if the platform refuses to
///     make or to release the contexts of `pCrlInfo`, though not for want of memory, the call ends
///     at once with TRUE and `dwError` 0.
///
/// What a question may cost is bounded, together with the questions that it leads to on the same
/// thread. The limits are values of 32 or 64 bits in HKEY_LOCAL_MACHINE,
/// "SOFTWARE\Norvane\PkiValidator", read once in the life of the process (on Linux section [limits]
/// of the configuration):
///
///     MaxSignatureVerifications   10000
///     MaxHashedBytes              17179869184, for signatures
///     MaxShownObjects             5000000 certificates and CRLs shown by stores
///     MaxRetrievals               64, over the wire
///     MaxRetrievalMilliseconds    60000 for all of these together
///
/// When one is spent, when little is left of the thread's stack, or when the process fails (memory,
/// descriptors, a file that cannot be read, a library), the answer is `CRYPT_E_NO_REVOCATION_CHECK`
/// for the outermost question, whatever was found until then. A certificate that is being checked
/// on the thread already, by a question further out, is not checked again: the same answer for it.
NORVANE_MODULE_API BOOL WINAPI CertDllVerifyRevocation(
    DWORD dwEncodingType, DWORD dwRevType, DWORD cContext, PVOID rgpvContext[], DWORD dwFlags,
    PCERT_REVOCATION_PARA pRevPara, PCERT_REVOCATION_STATUS pRevStatus) NORVANE_MODULE_NOEXCEPT;

/// Turns the blob of a GOST R 34.10-94 public key into text: one text for the key, one for its
/// parameters.
///
/// The blob, all numbers little-endian:
///
///     offset  octets
///     0       1       type, 6
///     1       1       version, 0x20
///     2       2       1
///     4       4       ALG_ID of the key
///     8       4       "MAG1"
///     12      4       length of the key in bits, a multiple of 8
///     16      n       GostR3410-94-PublicKeyParameters (RFC 4491 2.3.1) in BER, one element
///     16 + n          the key
///
/// Of the first sixteen octets the length of the key alone is read. What follows the key is
/// ignored.
///
/// The text of the key is an element GostR3410_94_PublicKeyOctetString. It holds the key in Base64
/// (RFC 4648 4), in lines of 64 characters that each end in a line feed:
///
///     <GostR3410_94_PublicKeyOctetString>QUJD
///     </GostR3410_94_PublicKeyOctetString>
///
/// The text of the parameters is their encoding in canonical XER (X.693 9), all on one line:
///
///     <GostR3410-94-PublicKeyParameters><publicKeyParamSet>1.2.643.2.2.32.2</publicKeyParamSet>
///     <digestParamSet>1.2.643.2.2.30.1</digestParamSet></GostR3410-94-PublicKeyParameters>
///
/// An element encryptionParamSet follows where the parameters have that field.
///
/// @param dwCertEncodingType ignored.
/// @param pszPublicKeyObjId ignored; may be null.
/// @param pbPubKeyBlob the blob; may be null if `cbPubKeyBlob` is 0.
/// @param cbPubKeyBlob its length in bytes.
/// @param dwFlags ignored.
/// @param pvAuxInfo ignored; may be null.
/// @param ppbKeyText receives the text of the key, in ASCII, with a terminating zero. The caller
///     releases it. Null on failure.
/// @param pcbKeyText receives the length of that text in bytes without the terminating zero. On
///     failure it is untouched, or 70 and three for each byte that the blob says its key has.
/// @param ppbParametersText receives the text of the parameters, in ASCII, WITHOUT a terminating
///     zero. The caller releases it, ON FAILURE TOO: a failure that comes after this text was made
///     leaves it here, and any earlier one leaves null.
/// @param pcbParametersText receives the length of that text in bytes. Untouched where the text is
///     null.
/// @return FALSE on failure, with the last error
///     `CRYPT_E_ASN1_ERROR` (there are no parameters at offset 16, or no proper ones, or one of
///     their identifiers has an arc beyond 32 bits),
///     `ERROR_BAD_ARGUMENTS` (the key is empty, or longer than what is left of the blob), or
///     `ERROR_NOT_ENOUGH_MEMORY`.
NORVANE_MODULE_API BOOL WINAPI NorvaneXEREncodePublicKeyAndParameters(
    DWORD dwCertEncodingType, LPCSTR pszPublicKeyObjId, const BYTE* pbPubKeyBlob,
    DWORD cbPubKeyBlob, DWORD dwFlags, void* pvAuxInfo, BYTE** ppbKeyText, DWORD* pcbKeyText,
    BYTE** ppbParametersText, DWORD* pcbParametersText) NORVANE_MODULE_NOEXCEPT;

/// Turns the texts of a GOST R 34.10-94 public key and of its parameters back into a blob, as told
/// at `NorvaneXEREncodePublicKeyAndParameters`.
///
/// The text of the key must be the element and nothing else, not so much as a line feed behind it.
/// Inside it white space is skipped, and lines may have up to 79 characters.
///
/// The text of the parameters may have an XML declaration, and white space around elements. It has
/// no attributes, comments, references or other things of XML, and at most 65,536 bytes.
/// Identifiers are dotted decimal text without leading zeros, with arcs of 32 bits.
///
/// @param dwCertEncodingType ignored.
/// @param pInfo `PublicKey` holds the text of the key (its unused bits are ignored),
///     `Algorithm.Parameters` the text of the parameters, both without a terminating zero, and
///     `Algorithm.pszObjId` the identifier of the key's algorithm, whose `Algid` among the
///     platform's public key algorithms goes into the blob.
/// @param aiKeyAlg ignored; it has no influence on the blob.
/// @param dwFlags ignored.
/// @param ppbPubKey receives the blob, which the caller releases. Null only asks for its size.
///     Untouched on failure.
/// @param pcbPubKey receives the size of the blob in bytes; what it was before is not read.
///     Untouched on failure.
/// @return FALSE on failure, with the last error
///     as `CryptFindOIDInfo` set it (the algorithm is not known: `CRYPT_E_NOT_FOUND`),
///     `CRYPT_E_ASN1_ERROR` (the text of the parameters),
///     `CRYPT_E_BAD_ENCODE` (the text of the key is not Base64),
///     `CRYPT_E_BAD_LEN` (the key has 2^29 bytes or more), or
///     `ERROR_NOT_ENOUGH_MEMORY`; if the tags around the key are wrong, or there is nothing
///     between them, the last error is the one from before the call, and if the Base64 text gives
///     no byte it is `ERROR_SUCCESS`.
NORVANE_MODULE_API BOOL WINAPI NorvaneXERConvertPublicKeyInfo(
    DWORD dwCertEncodingType, PCERT_PUBLIC_KEY_INFO pInfo, ALG_ID aiKeyAlg, DWORD dwFlags,
    BYTE** ppbPubKey, DWORD* pcbPubKey) NORVANE_MODULE_NOEXCEPT;

#ifdef __cplusplus
}
#endif
