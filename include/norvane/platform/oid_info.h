#pragma once

#include <norvane/platform/algorithm_ids.h>
#include <norvane/platform/encoding.h>
#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// What the platform knows about object identifiers of algorithms: one table, the same for every
/// caller, in which an identifier may have several entries.
///
/// RSA keys have an entry of the class of key exchange before the one of the class of signatures.
/// There is no entry for MD2, MD4 or MD5, and none of a signature with them. Those of SHA-1 are
/// there unless the configuration says `sha1 = off` in its section `[crypto]`.

/// Groups of the table.
#define CRYPT_HASH_ALG_OID_GROUP_ID 1U
#define CRYPT_ENCRYPT_ALG_OID_GROUP_ID 2U
#define CRYPT_PUBKEY_ALG_OID_GROUP_ID 3U
#define CRYPT_SIGN_ALG_OID_GROUP_ID 4U

/// What `CryptFindOIDInfo` goes by, and to what its `pvKey` points: the text of an identifier
/// (`char`); a name (`WCHAR`); an `ALG_ID`; two of them, of a hash and of a public key.
#define CRYPT_OID_INFO_OID_KEY 1U
#define CRYPT_OID_INFO_NAME_KEY 2U
#define CRYPT_OID_INFO_ALGID_KEY 3U
#define CRYPT_OID_INFO_SIGN_KEY 4U

/// Set in a group: search no directory service. On Linux none is searched anyway.
#define CRYPT_OID_DISABLE_SEARCH_DS_FLAG 0x80000000U

/// A flag in `ExtraInfo`: the algorithm's identifier stands without parameters.
#define CRYPT_OID_NO_NULL_ALGORITHM_PARA_FLAG 0x4U

/// An entry. `Algid` is the algorithm's number; in the group of signatures it is the number of the
/// hash, and `ExtraInfo` holds up to three words of 32 bits: the number of the public key's
/// algorithm, flags, and, where a certain one is wanted, the type of provider.
typedef struct CRYPT_OID_INFO {
    DWORD cbSize;
    LPCSTR pszOID;
    LPCWSTR pwszName;
    DWORD dwGroupId;
    union {
        DWORD dwValue;
        ALG_ID Algid;
        DWORD dwLength;
    };
    CRYPT_DATA_BLOB ExtraInfo;
} CRYPT_OID_INFO, *PCRYPT_OID_INFO;
typedef const CRYPT_OID_INFO CCRYPT_OID_INFO, *PCCRYPT_OID_INFO;

static_assert(sizeof(CRYPT_OID_INFO) == 48 && offsetof(CRYPT_OID_INFO, dwGroupId) == 24 &&
                  offsetof(CRYPT_OID_INFO, Algid) == 28 &&
                  offsetof(CRYPT_OID_INFO, ExtraInfo) == 32,
              "CRYPT_OID_INFO");

/// Called for an entry of the table. TRUE to go on, FALSE to stop. No exception may leave it.
typedef BOOL (*PFN_CRYPT_ENUM_OID_INFO)(PCCRYPT_OID_INFO pInfo, void* pvArg);

NORVANE_PLATFORM_BEGIN

/// The first entry of the table that has this key. Names are equal in upper and lower case, as far
/// as they are ASCII.
///
/// @param dwKeyType one of the four above; it says what `pvKey` is.
/// @param pvKey the key; read only during the call.
/// @param dwGroupId the group, or 0 for all, with or without the flag above.
/// @return the entry, which belongs to the table and stays as it is. Null on failure, with the last
///     error `E_INVALIDARG` (another key type, or a null key) or `CRYPT_E_NOT_FOUND`.
PCCRYPT_OID_INFO CryptFindOIDInfo(DWORD dwKeyType, void* pvKey, DWORD dwGroupId)
    NORVANE_PLATFORM_API(CryptFindOIDInfo);

/// Calls `pfnEnumOIDInfo` for each entry of a group, in the order of the table.
///
/// @param dwGroupId the group, or 0 for all.
/// @param dwFlags must be 0.
/// @param pvArg handed on to each call.
/// @return TRUE when all were seen. FALSE if a call said so, with the last error left alone, or
///     with the last error `E_INVALIDARG` if there are flags or no function.
BOOL CryptEnumOIDInfo(DWORD dwGroupId, DWORD dwFlags, void* pvArg,
                      PFN_CRYPT_ENUM_OID_INFO pfnEnumOIDInfo)
    NORVANE_PLATFORM_API(CryptEnumOIDInfo);

/// The text of the identifier of the first entry, in any group, that has this number, so that of
/// the algorithm itself. It belongs to the table.
///
/// @return null if there is none, with the last error `CRYPT_E_NOT_FOUND`.
LPCSTR CertAlgIdToOID(DWORD dwAlgId) NORVANE_PLATFORM_API(CertAlgIdToOID);

/// The number in the first entry, in any group, for an identifier. For the algorithm of a signature
/// this is the number of its hash.
///
/// @param pszObjId dotted decimal text.
/// @return 0 if there is none, with the last error `CRYPT_E_NOT_FOUND`, or `E_INVALIDARG` for null.
DWORD CertOIDToAlgId(LPCSTR pszObjId) NORVANE_PLATFORM_API(CertOIDToAlgId);

NORVANE_PLATFORM_END
