#pragma once

#include <norvane/platform/algorithm_ids.h>
#include <norvane/platform/certificates.h>
#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// Cryptographic providers: hashes and the verification of signatures. There are no key containers
/// and no private keys.
///
/// A handle names an object of its own, stays valid until it is released or destroyed, and may be
/// used from several threads at once; the caller sees to it that no thread uses it any longer when
/// it goes. Hashes and keys live on when the context that they were made with is released. A
/// function that is given 0, or a handle of another kind, fails with the error of its kind:
/// `NTE_BAD_UID` for providers, `NTE_BAD_HASH`, `NTE_BAD_KEY`.
///
/// Any function that has to make something may also fail with `NTE_NO_MEMORY`, or with `NTE_FAIL`
/// when a library below fails without a reason.
typedef uintptr_t HCRYPTPROV;
typedef uintptr_t HCRYPTHASH;
typedef uintptr_t HCRYPTKEY;

/// Types of providers. The last one is for GOST R 34.10 and is our own.
#define PROV_RSA_FULL 1U
#define PROV_RSA_AES 24U
#define PROV_NORVANE_GOST 243U

/// Flags of `CryptAcquireContext`: no key container is wanted.
#define CRYPT_VERIFYCONTEXT 0xF0000000U

/// Parameters of `CryptGetProvParam`, and what they give: the provider's name (`CHAR` text with its
/// terminator); its type (`DWORD`); its algorithms one by one (`PROV_ENUMALGS_EX`).
#define PP_NAME 4U
#define PP_PROVTYPE 16U
#define PP_ENUMALGS_EX 22U

/// Flags of enumerations: begin anew, go on.
#define CRYPT_FIRST 1U
#define CRYPT_NEXT 2U

/// An algorithm of a provider. Lengths of keys and hashes are in bits, those of the names in bytes
/// with the terminator.
typedef struct PROV_ENUMALGS_EX {
    ALG_ID aiAlgid;
    DWORD dwDefaultLen;
    DWORD dwMinLen;
    DWORD dwMaxLen;
    DWORD dwProtocols;
    DWORD dwNameLen;
    CHAR szName[20];
    DWORD dwLongNameLen;
    CHAR szLongName[40];
} PROV_ENUMALGS_EX;

static_assert(sizeof(PROV_ENUMALGS_EX) == 88 && offsetof(PROV_ENUMALGS_EX, szLongName) == 48,
              "PROV_ENUMALGS_EX");

NORVANE_PLATFORM_BEGIN

/// The provider with this index among all that are installed.
///
/// @param dwIndex from 0.
/// @param pdwReserved must be null.
/// @param dwFlags must be 0.
/// @param pdwProvType receives the provider's type.
/// @param szProvName receives the name, ASCII with its terminator; null only asks for the size.
/// @param pcbProvName in: the size of `szProvName` in bytes, not read if that is null. Out: the
///     size of the name with its terminator, on success and with `ERROR_MORE_DATA`.
/// @return FALSE on failure, with the last error `ERROR_NO_MORE_ITEMS`, `ERROR_MORE_DATA` (the
///     type is told all the same), `NTE_BAD_FLAGS`, or `ERROR_INVALID_PARAMETER` for the pointers.
BOOL CryptEnumProvidersA(DWORD dwIndex, DWORD* pdwReserved, DWORD dwFlags, DWORD* pdwProvType,
                         LPSTR szProvName, DWORD* pcbProvName)
    NORVANE_PLATFORM_API(CryptEnumProvidersA);

/// The type with this index among those that have a provider, in the manner of
/// `CryptEnumProvidersA`; the name is that of the type.
BOOL CryptEnumProviderTypesA(DWORD dwIndex, DWORD* pdwReserved, DWORD dwFlags, DWORD* pdwProvType,
                             LPSTR szTypeName, DWORD* pcbTypeName)
    NORVANE_PLATFORM_API(CryptEnumProviderTypesA);

/// Opens a provider.
///
/// @param phProv receives the handle, with one reference that the caller drops with
///     `CryptReleaseContext`. Untouched on failure.
/// @param szContainer null or empty.
/// @param szProvider the provider's name, in upper and lower case alike; null for the default one
///     of the type.
/// @param dwProvType the type.
/// @param dwFlags `CRYPT_VERIFYCONTEXT`.
/// @return FALSE on failure, with the last error
///     `ERROR_INVALID_PARAMETER` (null for the handle), `NTE_BAD_FLAGS` (other flags),
///     `NTE_BAD_KEYSET` (a container is named), `NTE_BAD_PROV_TYPE` (no type from 1 to 999),
///     `NTE_PROV_TYPE_NOT_DEF` (no provider of this type), `NTE_KEYSET_NOT_DEF` (no provider of
///     this name), `NTE_PROV_TYPE_NO_MATCH` (it is of another type) or
///     `NTE_PROVIDER_DLL_FAIL` (the library behind it could not be started).
BOOL CryptAcquireContextA(HCRYPTPROV* phProv, LPCSTR szContainer, LPCSTR szProvider,
                          DWORD dwProvType, DWORD dwFlags)
    NORVANE_PLATFORM_API(CryptAcquireContextA);
BOOL CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR szContainer, LPCWSTR szProvider,
                          DWORD dwProvType, DWORD dwFlags)
    NORVANE_PLATFORM_API(CryptAcquireContextW);

/// Adds a reference. `pdwReserved` must be null and `dwFlags` 0: else `ERROR_INVALID_PARAMETER`,
/// `NTE_BAD_FLAGS`.
BOOL CryptContextAddRef(HCRYPTPROV hProv, DWORD* pdwReserved, DWORD dwFlags)
    NORVANE_PLATFORM_API(CryptContextAddRef);

/// Drops a reference; the last one releases the context. `dwFlags` must be 0: else `NTE_BAD_FLAGS`,
/// and the reference is kept.
BOOL CryptReleaseContext(HCRYPTPROV hProv, DWORD dwFlags) NORVANE_PLATFORM_API(CryptReleaseContext);

/// Tells something about a provider.
///
/// An enumeration has its place in the context: `CRYPT_FIRST` goes to the first algorithm, any
/// other call to the one behind the last that was told.
///
/// @param dwParam one of the three above.
/// @param pbData receives the value; null only asks for the size.
/// @param pdwDataLen in: the size of `pbData` in bytes, not read if that is null. Out: the size of
///     the value, on success and with `ERROR_MORE_DATA`.
/// @param dwFlags 0; for `PP_ENUMALGS_EX` 0, `CRYPT_FIRST` or `CRYPT_NEXT`.
/// @return FALSE on failure, with the last error `ERROR_NO_MORE_ITEMS`, `ERROR_MORE_DATA`,
///     `ERROR_INVALID_PARAMETER` (null for the size), `NTE_BAD_FLAGS` or `NTE_BAD_TYPE` (another
///     parameter).
BOOL CryptGetProvParam(HCRYPTPROV hProv, DWORD dwParam, BYTE* pbData, DWORD* pdwDataLen,
                       DWORD dwFlags) NORVANE_PLATFORM_API(CryptGetProvParam);

/// Begins a hash.
///
/// @param Algid a hash of the provider. SHA-1 is none if the configuration says so.
/// @param hKey must be 0.
/// @param dwFlags must be 0.
/// @param phHash receives the handle, which the caller ends with `CryptDestroyHash`.
/// @return FALSE on failure, with the last error `NTE_BAD_ALGID`, `NTE_BAD_KEY`, `NTE_BAD_FLAGS` or
///     `ERROR_INVALID_PARAMETER` (null for the handle).
BOOL CryptCreateHash(HCRYPTPROV hProv, ALG_ID Algid, HCRYPTKEY hKey, DWORD dwFlags,
                     HCRYPTHASH* phHash) NORVANE_PLATFORM_API(CryptCreateHash);

/// Adds bytes to a hash.
///
/// @param pbData the bytes; may be null if there are none.
/// @param dwFlags must be 0.
/// @return FALSE on failure, with the last error `NTE_BAD_HASH_STATE` (a verification has finished
///     the hash), `NTE_BAD_FLAGS` or `ERROR_INVALID_PARAMETER`.
BOOL CryptHashData(HCRYPTHASH hHash, const BYTE* pbData, DWORD dwDataLen, DWORD dwFlags)
    NORVANE_PLATFORM_API(CryptHashData);

BOOL CryptDestroyHash(HCRYPTHASH hHash) NORVANE_PLATFORM_API(CryptDestroyHash);

/// Makes a key from a SubjectPublicKeyInfo. Keys are known by these algorithms:
///  - RSA (RFC 3279 2.3.1), from 1024 to 16384 bits, with an odd exponent from 3 to 2^64;
///  - DSA (RFC 3279 2.3.2) with its parameters, from 1024 to 4096 bits;
///  - ECDSA (RFC 5480) over a named curve: those of NIST over prime fields, and Brainpool's;
///  - GOST R 34.10-94 and -2001 (RFC 4491) and -2012 (RFC 9215) over the sets of RFC 4357 and
///    RFC 7836. The parameters of 34.11-94 must be 1.2.643.2.2.30.1.
///
/// The platform remembers a bounded number of keys, with what was computed for them in advance, by
/// the bytes that they were made from; to ask for one again is cheap.
///
/// Bits that are no key, or one outside these limits, are imported too: every signature is bad
/// under such a key.
///
/// @param dwCertEncodingType must contain `X509_ASN_ENCODING`.
/// @param pInfo the key; read only during the call.
/// @param aiKeyAlg 0, or a number that the table of identifiers has for the key's algorithm.
/// @param dwFlags must be 0.
/// @param pvAuxInfo must be null.
/// @param phKey receives the handle, which the caller ends with `CryptDestroyKey`.
/// @return FALSE on failure, with the last error `NTE_BAD_ALGID` (not an algorithm of this
/// provider,
///     or not `aiKeyAlg`), `ERROR_FILE_NOT_FOUND` (an unknown algorithm or encoding),
///     `NTE_BAD_FLAGS` or `ERROR_INVALID_PARAMETER`; or `NTE_NO_MEMORY`, `NTE_FAIL` or
///     `NTE_PROVIDER_DLL_FAIL` (a library is there and cannot be loaded), which say nothing about
///     the bits.
BOOL CryptImportPublicKeyInfoEx(HCRYPTPROV hCryptProv, DWORD dwCertEncodingType,
                                PCERT_PUBLIC_KEY_INFO pInfo, ALG_ID aiKeyAlg, DWORD dwFlags,
                                void* pvAuxInfo, HCRYPTKEY* phKey)
    NORVANE_PLATFORM_API(CryptImportPublicKeyInfoEx);

BOOL CryptDestroyKey(HCRYPTKEY hKey) NORVANE_PLATFORM_API(CryptDestroyKey);

/// Verifies a signature over what was hashed, and finishes the hash; it can be used for further
/// verifications.
///
/// @param pbSignature the signature as it stands in a certificate, all of its bytes in reverse
///     order, whatever the algorithm. For RSA this is the platform's little-endian number. For DSA
///     and ECDSA it is the reverse of the DER of SEQUENCE { r, s } (RFC 3279 2.2.2); the pair of
///     bare numbers that the platform itself makes is not taken. For GOST R 34.10 it is the reverse
///     of s and r, both big-endian (RFC 4491 2.2), which makes r and s little-endian.
/// @param dwSigLen its length in bytes.
/// @param hPubKey a key of the provider that the hash belongs to.
/// @param szDescription must be null.
/// @param dwFlags must be 0.
/// @return TRUE if the signature is good. FALSE else, with the last error `NTE_BAD_SIGNATURE` (it
///     does not hold), `NTE_NO_MEMORY` or `NTE_FAIL` (nobody could tell), `NTE_BAD_ALGID` (the key
///     does not go with this hash), `NTE_BAD_FLAGS` or `ERROR_INVALID_PARAMETER`.
BOOL CryptVerifySignatureW(HCRYPTHASH hHash, const BYTE* pbSignature, DWORD dwSigLen,
                           HCRYPTKEY hPubKey, LPCWSTR szDescription, DWORD dwFlags)
    NORVANE_PLATFORM_API(CryptVerifySignatureW);

NORVANE_PLATFORM_END
