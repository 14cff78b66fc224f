#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// Encoding types. The low half tells the encoding of certificates, the high half the one of
/// messages.
#define X509_ASN_ENCODING 0x00000001U
#define PKCS_7_ASN_ENCODING 0x00010000U

/// A predefined structure type: a small number in the place of the text of an object identifier.
#ifdef __cplusplus
#define NORVANE_STRUCTURE_TYPE(number) (reinterpret_cast<LPCSTR>(uintptr_t{number}))
#else
#define NORVANE_STRUCTURE_TYPE(number) ((LPCSTR)(uintptr_t)(number))
#endif

/// An ENUMERATED, decoded to an `int`.
#define X509_ENUMERATED NORVANE_STRUCTURE_TYPE(29)

/// Flags of `CryptDecodeObject`: views into the input are welcome in place of copies; object
/// identifiers may be shared.
#define CRYPT_DECODE_NOCOPY_FLAG 0x1U
#define CRYPT_DECODE_SHARE_OID_STRING_FLAG 0x4U

/// Bytes that another party owns. As an integer: two's complement, least significant byte first.
typedef struct CRYPTOAPI_BLOB {
    DWORD cbData;
    BYTE* pbData;
} CRYPT_DATA_BLOB, *PCRYPT_DATA_BLOB, CRYPT_INTEGER_BLOB, *PCRYPT_INTEGER_BLOB;

/// Purposes of a key, as texts of object identifiers.
typedef struct CTL_USAGE {
    DWORD cUsageIdentifier;
    LPSTR* rgpszUsageIdentifier;
} CTL_USAGE, *PCTL_USAGE, CERT_ENHKEY_USAGE, *PCERT_ENHKEY_USAGE;

/// How the purposes that are asked for must be met: all of them, or any.
#define USAGE_MATCH_TYPE_AND 0x0U
#define USAGE_MATCH_TYPE_OR 0x1U

typedef struct CERT_USAGE_MATCH {
    DWORD dwType;
    CERT_ENHKEY_USAGE Usage;
} CERT_USAGE_MATCH, *PCERT_USAGE_MATCH;

static_assert(sizeof(CRYPT_DATA_BLOB) == 16 && offsetof(CRYPT_DATA_BLOB, pbData) == 8, "blobs");
static_assert(sizeof(CTL_USAGE) == 16 && offsetof(CTL_USAGE, rgpszUsageIdentifier) == 8,
              "CTL_USAGE");
static_assert(sizeof(CERT_USAGE_MATCH) == 24 && offsetof(CERT_USAGE_MATCH, Usage) == 8,
              "CERT_USAGE_MATCH");

NORVANE_PLATFORM_BEGIN

/// Decodes one BER value into the platform's structure for its type.
///
/// `X509_ENUMERATED` gives an `int`: definite length in any of its forms, one to four content
/// octets, signed. `X509_AUTHORITY_KEY_ID2`, or the text of its identifier, gives the structure of
/// key_identifier.h with all that it points to behind it, BER being taken as well as DER.
///
/// @param dwCertEncodingType `X509_ASN_ENCODING`, `PKCS_7_ASN_ENCODING` or both.
/// @param lpszStructType the structure type, a number or a text out of those above.
/// @param pbEncoded the value, with nothing behind it; read only during the call.
/// @param cbEncoded its length in bytes.
/// @param dwFlags the flags above, or 0.
/// @param pvStructInfo receives the structure; null only asks for its size. Untouched on failure.
/// @param pcbStructInfo in: the size of `pvStructInfo` in bytes, not read if that is null. Out: the
///     size of the structure, on success and with `ERROR_MORE_DATA`; else untouched.
/// @return FALSE on failure, with the last error
///     `E_INVALIDARG` (another flag; null for the size, or for bytes that are not empty),
///     `ERROR_FILE_NOT_FOUND` (a structure or encoding type that is not known),
///     `ERROR_MORE_DATA` (`pvStructInfo` is too small), or for the encoded bytes
///     `CRYPT_E_ASN1_EOD` (they end too early), `CRYPT_E_ASN1_BADTAG`, `CRYPT_E_ASN1_CORRUPT`,
///     `CRYPT_E_ASN1_LARGE` (the value does not fit), `CRYPT_E_ASN1_NOEOD` (bytes behind it),
///     `CRYPT_E_INVALID_IA5_STRING`, or `ERROR_NOT_ENOUGH_MEMORY`.
BOOL CryptDecodeObject(DWORD dwCertEncodingType, LPCSTR lpszStructType, const BYTE* pbEncoded,
                       DWORD cbEncoded, DWORD dwFlags, void* pvStructInfo, DWORD* pcbStructInfo)
    NORVANE_PLATFORM_API(CryptDecodeObject);

NORVANE_PLATFORM_END
