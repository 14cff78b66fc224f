#pragma once

#include <norvane/platform/certificates.h>

/// Retrieval of certificates and CRLs from URLs.
///
/// Schemes are `http` and `https` (RFC 9110), `ldap` and `ldaps` (RFC 4516, with attributes of
/// RFC 4523), and `file` where the configuration allows it. What a URL delivers is DER or BER of an
/// object, PKCS #7 or CMS SignedData with objects, or PEM (RFC 7468) with any number of these. The
/// objects of the kind that is asked for are taken; a response without any is a failure.
///
/// Responses are kept in the cache folder of the configuration, which processes may share. Where
/// there is no folder that can be written to, nothing is kept, and all else works.

/// What is retrieved: a small number in the place of a text.
#define CONTEXT_OID_CERTIFICATE NORVANE_STRUCTURE_TYPE(1)
#define CONTEXT_OID_CRL NORVANE_STRUCTURE_TYPE(2)

/// Flags: the result is a store with all objects, not one context; the cache alone is asked.
#define CRYPT_RETRIEVE_MULTIPLE_OBJECTS 0x00000001U
#define CRYPT_CACHE_ONLY_RETRIEVAL 0x00000002U

/// A handle of an asynchronous retrieval. There are none.
typedef void* HCRYPTASYNC;

/// Credentials, and what else a retrieval may be told and tell. None of it is served.
typedef struct CRYPT_CREDENTIALS CRYPT_CREDENTIALS, *PCRYPT_CREDENTIALS;
typedef struct CRYPT_RETRIEVE_AUX_INFO CRYPT_RETRIEVE_AUX_INFO, *PCRYPT_RETRIEVE_AUX_INFO;

/// Last errors of a retrieval that have names of their own.
#define ERROR_FILE_TOO_LARGE 223U
#define ERROR_INTERNET_INVALID_URL 12005U
#define ERROR_INTERNET_UNRECOGNIZED_SCHEME 12006U
#define ERROR_INTERNET_NAME_NOT_RESOLVED 12007U
#define ERROR_INTERNET_CANNOT_CONNECT 12029U
#define ERROR_INTERNET_CONNECTION_ABORTED 12030U
#define ERROR_HTTP_REDIRECT_FAILED 12156U
#define ERROR_INTERNET_SECURITY_CHANNEL_ERROR 12157U
/// The status code of HTTP stands in the low bits: 0x80190194 is 404.
#define HTTP_E_STATUS_FIRST 0x80190000U

NORVANE_PLATFORM_BEGIN

/// Retrieves the certificates or CRLs at a URL.
///
/// With `CRYPT_CACHE_ONLY_RETRIEVAL` the answer comes from the cache whatever its age, without a
/// look-up of names and without a connection. Otherwise the server is asked, unless it has failed
/// lately; if the cache has a response, whether it has changed, where HTTP can tell. A failure then
/// is a failure, also if something is cached.
///
/// Old CRLs that are played back do not undo a revocation: of CRLs with the same issuer, authority
/// key identifier and issuing distribution point, apart for deltas, only the newest of a response
/// are in the result, and none that is older than one that any URL has delivered before; for how
/// long that is known, docs/configuration.md tells. If a server delivers none but such, what the
/// cache has of theirs is the answer. A CRL that is dated more than a day ahead keeps nothing out.
///
/// Names and passwords in URLs are refused, and nothing else identifies the caller to a server:
/// no .netrc, no cookies. Redirections of HTTP are followed to http and https only, referrals of
/// LDAP not at all. Content that is compressed is not unpacked. All URLs but those of files need a
/// host of letters, digits, ".", "-" and "_" without escapes, or an address. Those of LDAP have no
/// control characters, escaped or not; without attributes they ask for those that RFC 4523 has for
/// the kind of object.
///
/// Threads that ask for the same at once share one request. The request is carried out by a thread
/// that the platform starts, with all signals blocked, so that the time-out holds also where the
/// look-up of a name blocks. A child of fork has nothing on its way.
///
/// @param pszUrl the URL in ASCII.
/// @param pszObjectOid `CONTEXT_OID_CERTIFICATE` or `CONTEXT_OID_CRL`.
/// @param dwRetrievalFlags the flags above, or 0.
/// @param dwTimeout milliseconds for all that concerns the network, from the look-up of the name to
///     the last byte; the call returns at most 100 ms later. 0 for the time of the configuration.
/// @param ppvObject receives with `CRYPT_RETRIEVE_MULTIPLE_OBJECTS` an `HCERTSTORE`, to be closed
///     with `CertCloseStore`, with the objects in the order of the response; else the first object,
///     a `PCCERT_CONTEXT` or `PCCRL_CONTEXT`, to be freed as such. The store takes no additions,
///     and is one for all who retrieve the same response, so that leaving it open costs little.
///     Null on failure.
/// @param hAsyncRetrieve, pCredentials, pvVerify, pAuxInfo null.
/// @return FALSE on failure, with the last error
///     `E_INVALIDARG` (no URL, no place for the object, another kind, another flag, or what must be
///     null is not),
///     `ERROR_INTERNET_INVALID_URL`, `ERROR_INTERNET_UNRECOGNIZED_SCHEME` (a scheme that is not
///     known or that the configuration does not allow),
///     `CRYPT_E_NOT_FOUND` (the cache does not have it, or the directory has no such entry, or no
///     such attribute), `ERROR_FILE_NOT_FOUND` (no such file),
///     `CRYPT_E_NO_MATCH` (the response has no object of this kind),
///     `ERROR_INVALID_DATA` (all CRLs of the response are older than ones that were seen before,
///     which the cache does not have),
///     `ERROR_TIMEOUT`, `ERROR_FILE_TOO_LARGE` (the response exceeds the limit of the
///     configuration), `ERROR_INTERNET_NAME_NOT_RESOLVED`, `ERROR_INTERNET_CANNOT_CONNECT`,
///     `ERROR_INTERNET_CONNECTION_ABORTED` (the response is incomplete or not understood),
///     `ERROR_INTERNET_SECURITY_CHANNEL_ERROR` (TLS, or the server's certificate),
///     `ERROR_HTTP_REDIRECT_FAILED` (too many redirections, or one to another scheme or to no
///     host), `HTTP_E_STATUS_FIRST` plus any status of HTTP but 200, `ERROR_ACCESS_DENIED` (the
///     file or the entry may not be read), `ERROR_MOD_NOT_FOUND` (there is no
///     norvane_transports.so, which speaks to servers, in folder "norvane" beside this library) or
///     `E_FAIL` (any other failure of the server).
///
///     These tell of this process, and say nothing about the server or the cache:
///     `ERROR_NOT_ENOUGH_MEMORY`, `ERROR_TOO_MANY_OPEN_FILES`, `ERROR_READ_FAULT` (a file that
///     exists cannot be read), `ERROR_NO_SYSTEM_RESOURCES` (no thread, or too many requests on
///     their way) or `ERROR_INTERNAL_ERROR` (a library failed).
BOOL CryptRetrieveObjectByUrlA(LPCSTR pszUrl, LPCSTR pszObjectOid, DWORD dwRetrievalFlags,
                               DWORD dwTimeout, LPVOID* ppvObject, HCRYPTASYNC hAsyncRetrieve,
                               PCRYPT_CREDENTIALS pCredentials, LPVOID pvVerify,
                               PCRYPT_RETRIEVE_AUX_INFO pAuxInfo)
    NORVANE_PLATFORM_API(CryptRetrieveObjectByUrlA);

/// How a retrieval ended, told by a program that answers it itself.
typedef struct _NORVANE_RETRIEVAL_ANSWER {
    DWORD cbSize;
    DWORD dwError;                   ///< a last error; `ERROR_SUCCESS` if there are objects
    DWORD cObject;                   ///< 0 on failure
    const CRYPT_DATA_BLOB* rgObject; ///< DER of the kind that is asked for, in their order
    LPCSTR pszCause;                 ///< of a failure, in words; null if nothing is known
    BOOL fRemembered;                ///< the failure is one of lately, and nobody was asked
    BOOL fConfirmed;                 ///< a server said that the cache's response is still right
    ULONGLONG ullMilliseconds;       ///< that it took
    ULONGLONG ullAgeSeconds;         ///< of the response
} NORVANE_RETRIEVAL_ANSWER;

/// Answers a retrieval with the first four arguments of `CryptRetrieveObjectByUrlA`. It throws
/// nothing.
///
/// @param pAnswer all zero but for its size. What it leads to must stay until the thread's next
///     retrieval.
typedef void(WINAPI* PFN_NORVANE_RETRIEVAL_SOURCE)(LPCSTR pszUrl, LPCSTR pszObjectOid,
                                                   DWORD dwRetrievalFlags, DWORD dwTimeout,
                                                   NORVANE_RETRIEVAL_ANSWER* pAnswer,
                                                   void* pvContext);

/// Sets who answers the retrievals of the calling thread in place of cache and network, or nobody
/// (null). Neither scheme nor host of a URL is judged then, nothing is cached, and no mark of a
/// CRL is made or looked at. An answer without an object of the kind, be it for one that cannot be
/// read, is `CRYPT_E_NO_MATCH`. For a program that has a decision made again from what was known.
void NorvaneSetRetrievalSource(PFN_NORVANE_RETRIEVAL_SOURCE pfnSource, void* pvContext)
    NORVANE_PLATFORM_API(NorvaneSetRetrievalSource);

NORVANE_PLATFORM_END
