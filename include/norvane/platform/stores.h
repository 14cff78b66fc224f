#pragma once

#include <norvane/platform/certificates.h>

/// Certificate stores: sets of certificates and CRLs behind a handle.
///
/// The values of handles ascend in the order of opening and are not used twice, so what is ordered
/// by them does not depend on memory. A value that is no open store is refused with
/// `ERROR_INVALID_HANDLE`. A store lives until it has been closed as often as it was opened and
/// duplicated and all contexts of it are freed; until then `hCertStore` of these contexts may be
/// duplicated. Stores may be used by any number of threads at once, also while one adds to them.
///
/// Nothing is ever taken out of an open store. Its objects stand in the order in which they were
/// added.

/// A way of making a store: a small number in the place of a name.
#define NORVANE_STORE_PROVIDER(number) NORVANE_STRUCTURE_TYPE(number)

/// An empty store in memory.
#define CERT_STORE_PROV_MEMORY NORVANE_STORE_PROVIDER(2)
/// A named system store, read from files.
#define CERT_STORE_PROV_SYSTEM_W NORVANE_STORE_PROVIDER(10)
/// A store that shows the objects of other stores.
#define CERT_STORE_PROV_COLLECTION NORVANE_STORE_PROVIDER(11)

/// Flags of `CertOpenStore`: only make a store anew; only open one that is there; allow no
/// additions.
#define CERT_STORE_CREATE_NEW_FLAG 0x00002000U
#define CERT_STORE_OPEN_EXISTING_FLAG 0x00004000U
#define CERT_STORE_READONLY_FLAG 0x00008000U
/// Where a system store is kept. All locations show the same stores on Linux.
#define CERT_SYSTEM_STORE_LOCATION_MASK 0x00FF0000U
#define CERT_SYSTEM_STORE_CURRENT_USER 0x00010000U
#define CERT_SYSTEM_STORE_LOCAL_MACHINE 0x00020000U

/// A flag of `CertCloseStore`: to be told if contexts of the store are still in use.
#define CERT_CLOSE_STORE_CHECK_FLAG 0x00000002U

/// What an addition does if the store has an object with the same bytes: fail with
/// `CRYPT_E_EXISTS`; use that one; replace it, which comes to the same, as equal bytes make equal
/// objects; or add another.
#define CERT_STORE_ADD_NEW 1U
#define CERT_STORE_ADD_USE_EXISTING 2U
#define CERT_STORE_ADD_REPLACE_EXISTING 3U
#define CERT_STORE_ADD_ALWAYS 4U

/// A flag of `CertAddStoreToCollection`: what is added to the collection goes to this member.
#define CERT_PHYSICAL_STORE_ADD_ENABLE_FLAG 0x00000001U

/// What `CertFindCertificateInStore` and `CertFindCRLInStore` look for.
#define CERT_FIND_ANY 0x00000000U
#define CERT_FIND_KEY_IDENTIFIER 0x000F0000U
#define CRL_FIND_ANY 0x00000000U

NORVANE_PLATFORM_BEGIN

/// Opens a store.
///
/// `CERT_STORE_PROV_SYSTEM_W` opens a store that the configuration names, upper and lower case
/// ASCII letters being the same. Its objects come from files of these forms, which are told apart
/// by their content: DER, PEM (RFC 7468) with any number of objects, and PKCS #7 or CMS SignedData
/// (RFC 2315, RFC 5652) in DER or PEM, of which only certificates and CRLs are read. Of each folder
/// the files in it are read in the order of their names, without those that begin with a dot.
/// Equal objects are taken once. What is no such object is passed over and costs only itself;
/// `NorvaneEnumSkippedStoreFiles` tells about it. But a store is shown whole or not at all: where a
/// file or folder is there and cannot be read, be it for want of permission, the opening fails.
///
/// A process reads a store once and shares what it has read. It looks at the files again when
/// somebody opens the store, but at most once a second, and reads it anew if a file has changed,
/// come or gone. A handle shows the store as it was when it was opened. Such a store is never
/// written to: additions fail with `E_ACCESSDENIED` whatever the flags.
///
/// @param lpszStoreProvider one of the providers above.
/// @param dwEncodingType ignored.
/// @param hCryptProv ignored.
/// @param dwFlags `CERT_STORE_READONLY_FLAG`, one of `CERT_STORE_CREATE_NEW_FLAG` and
///     `CERT_STORE_OPEN_EXISTING_FLAG`, and for a system store a location, or 0.
/// @param pvPara for a system store its name, a terminated `WCHAR` text; else ignored.
/// @return the store, to be closed with `CertCloseStore`. Null on failure, with the last error
///     `E_INVALIDARG` (other flags, both flags, no name),
///     `ERROR_FILE_NOT_FOUND` (another provider; or with `CERT_STORE_OPEN_EXISTING_FLAG`, a store
///     in memory or a name that the configuration does not have. Without that flag such a name
///     opens an empty store),
///     `ERROR_FILE_EXISTS` (`CERT_STORE_CREATE_NEW_FLAG` with a name that the configuration has),
///     `ERROR_NOT_ENOUGH_MEMORY`, `ERROR_TOO_MANY_OPEN_FILES`, or `ERROR_READ_FAULT` (a file or
///     folder cannot be read for another reason).
HCERTSTORE CertOpenStore(LPCSTR lpszStoreProvider, DWORD dwEncodingType, uintptr_t hCryptProv,
                         DWORD dwFlags, const void* pvPara) NORVANE_PLATFORM_API(CertOpenStore);

/// Opens a store once more.
///
/// @return the same handle. Null if `hCertStore` is null, and on failure with the last error
///     `ERROR_INVALID_HANDLE`.
HCERTSTORE CertDuplicateStore(HCERTSTORE hCertStore) NORVANE_PLATFORM_API(CertDuplicateStore);

/// Takes one opening back. Null is allowed.
///
/// @param dwFlags 0 or `CERT_CLOSE_STORE_CHECK_FLAG`.
/// @return FALSE with the last error `E_INVALIDARG` (another flag), `ERROR_INVALID_HANDLE` (not
///     open), or `CRYPT_E_PENDING_CLOSE` if it was asked for, this was the last opening, and
///     contexts or a collection keep the store; it is closed all the same.
BOOL CertCloseStore(HCERTSTORE hCertStore, DWORD dwFlags) NORVANE_PLATFORM_API(CertCloseStore);

/// Adds a copy of an encoded certificate. A collection passes it to its first member with
/// `CERT_PHYSICAL_STORE_ADD_ENABLE_FLAG`.
///
/// @param dwCertEncodingType, pbCertEncoded, cbCertEncoded as for `CertCreateCertificateContext`.
/// @param dwAddDisposition one of those above.
/// @param ppCertContext receives the store's context, to be released with
///     `CertFreeCertificateContext`; may be null. Null on failure.
/// @return FALSE with the last error `ERROR_INVALID_HANDLE`, `E_ACCESSDENIED` (the store takes no
///     additions), `CRYPT_E_EXISTS`, or one of `CertCreateCertificateContext`.
BOOL CertAddEncodedCertificateToStore(HCERTSTORE hCertStore, DWORD dwCertEncodingType,
                                      const BYTE* pbCertEncoded, DWORD cbCertEncoded,
                                      DWORD dwAddDisposition, PCCERT_CONTEXT* ppCertContext)
    NORVANE_PLATFORM_API(CertAddEncodedCertificateToStore);

/// `CertAddEncodedCertificateToStore` for a CRL.
BOOL CertAddEncodedCRLToStore(HCERTSTORE hCertStore, DWORD dwCertEncodingType,
                              const BYTE* pbCrlEncoded, DWORD cbCrlEncoded, DWORD dwAddDisposition,
                              PCCRL_CONTEXT* ppCrlContext)
    NORVANE_PLATFORM_API(CertAddEncodedCRLToStore);

/// Adds the certificate of a context, of which only the encoded bytes are read, and which stays
/// the caller's. Else as `CertAddEncodedCertificateToStore`.
BOOL CertAddCertificateContextToStore(HCERTSTORE hCertStore, PCCERT_CONTEXT pCertContext,
                                      DWORD dwAddDisposition, PCCERT_CONTEXT* ppStoreContext)
    NORVANE_PLATFORM_API(CertAddCertificateContextToStore);

/// Adds a store to a collection, which keeps it alive. A collection shows the objects of each of
/// its stores once, also of one that it was given twice or within another collection, and what is
/// added to a store later as well. Contexts that it gives out belong to the store that holds them.
///
/// @param hCollectionStore a collection.
/// @param hSiblingStore any store but the collection itself and one that contains it.
/// @param dwUpdateFlags 0 or `CERT_PHYSICAL_STORE_ADD_ENABLE_FLAG`.
/// @param dwPriority higher ones come first; those of equal priority in the order of addition.
/// @return FALSE with the last error `ERROR_INVALID_HANDLE`, `E_INVALIDARG` (other flags; no
///     collection, or a circle) or `ERROR_NOT_ENOUGH_MEMORY`.
BOOL CertAddStoreToCollection(HCERTSTORE hCollectionStore, HCERTSTORE hSiblingStore,
                              DWORD dwUpdateFlags, DWORD dwPriority)
    NORVANE_PLATFORM_API(CertAddStoreToCollection);

/// Gives the next certificate of a store, or of those with a subject key identifier. A certificate
/// that does not have the extension (RFC 5280 4.2.1.2) is not found by any identifier. Those with
/// one identifier are found without a walk over the others.
///
/// @param dwCertEncodingType ignored.
/// @param dwFindFlags ignored.
/// @param dwFindType `CERT_FIND_ANY` or `CERT_FIND_KEY_IDENTIFIER`.
/// @param pvFindPara for `CERT_FIND_KEY_IDENTIFIER` a `CRYPT_HASH_BLOB`; else ignored.
/// @param pPrevCertContext null for the first one; else the result of the call before, with the
///     same arguments. It is freed in any case.
/// @return the context, to be released with `CertFreeCertificateContext` or by the next call. Null
///     with the last error `CRYPT_E_NOT_FOUND` if there are no more, else `ERROR_INVALID_HANDLE`,
///     `E_INVALIDARG` (another type, no identifier, or a context that is none of this store) or
///     `ERROR_NOT_ENOUGH_MEMORY`.
PCCERT_CONTEXT CertFindCertificateInStore(HCERTSTORE hCertStore, DWORD dwCertEncodingType,
                                          DWORD dwFindFlags, DWORD dwFindType,
                                          const void* pvFindPara, PCCERT_CONTEXT pPrevCertContext)
    NORVANE_PLATFORM_API(CertFindCertificateInStore);

/// `CertFindCertificateInStore` with `CERT_FIND_ANY`.
PCCERT_CONTEXT CertEnumCertificatesInStore(HCERTSTORE hCertStore, PCCERT_CONTEXT pPrevCertContext)
    NORVANE_PLATFORM_API(CertEnumCertificatesInStore);

/// Gives the next CRL of a store.
///
/// @param dwFindType `CRL_FIND_ANY`. The other arguments and the result are those of
///     `CertFindCertificateInStore`; the context is released with `CertFreeCRLContext`.
PCCRL_CONTEXT CertFindCRLInStore(HCERTSTORE hCertStore, DWORD dwCertEncodingType, DWORD dwFindFlags,
                                 DWORD dwFindType, const void* pvFindPara,
                                 PCCRL_CONTEXT pPrevCrlContext)
    NORVANE_PLATFORM_API(CertFindCRLInStore);

/// Takes a file that was passed over, or an object of it, or the file that a store failed to open
/// for.
///
/// @param pszFile its path.
/// @param pszReason why, in words, with the number of the object if others of the file were taken.
///     Both texts live during the call.
/// @param pvArg what the caller of `NorvaneEnumSkippedStoreFiles` gave.
/// @return FALSE to be told no more.
typedef BOOL (*NORVANE_SKIPPED_FILE_CALLBACK)(LPCSTR pszFile, LPCSTR pszReason, void* pvArg);

/// Tells what of a named system store could not be read and was passed over, in the order of
/// reading. It looks at the files as `CertOpenStore` does. A path of the configuration at which
/// there is nothing is not told of. Where the opening would fail for a file or folder, it tells of
/// that one alone, and fails likewise.
///
/// @param pwszStoreName the name, as for `CertOpenStore`.
/// @param pfnCallback called once for each, without a lock being held. It must not throw.
/// @return FALSE with the last error `E_INVALIDARG` (no name, no function), `ERROR_FILE_NOT_FOUND`
///     (a name that the configuration does not have), `ERROR_NOT_ENOUGH_MEMORY`, or
///     `ERROR_TOO_MANY_OPEN_FILES` or `ERROR_READ_FAULT` (the file told of cannot be read).
BOOL NorvaneEnumSkippedStoreFiles(LPCWSTR pwszStoreName, NORVANE_SKIPPED_FILE_CALLBACK pfnCallback,
                                  void* pvArg) NORVANE_PLATFORM_API(NorvaneEnumSkippedStoreFiles);

NORVANE_PLATFORM_END
