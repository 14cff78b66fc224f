#include "platform/failure.h"

#include <algorithm>
#include <string_view>

namespace {

struct Description {
    DWORD code;
    std::string_view text;
};

/// Ascending by code. System errors stand here under their plain numbers only.
constexpr Description descriptions[] = {
    {ERROR_SUCCESS, "The operation succeeded."},
    {ERROR_FILE_NOT_FOUND, "The file or entry does not exist."},
    {ERROR_PATH_NOT_FOUND, "The path does not exist."},
    {ERROR_TOO_MANY_OPEN_FILES, "No more files can be opened."},
    {ERROR_ACCESS_DENIED, "Access is not permitted."},
    {ERROR_INVALID_HANDLE, "The handle is not valid."},
    {ERROR_NOT_ENOUGH_MEMORY, "There is not enough memory for this request."},
    {ERROR_INVALID_DATA, "The data is not valid."},
    {ERROR_OUTOFMEMORY, "Memory is exhausted."},
    {ERROR_READ_FAULT, "A file or device cannot be read."},
    {ERROR_NOT_SUPPORTED, "The request is not supported."},
    {ERROR_FILE_EXISTS, "The file or entry exists already."},
    {ERROR_INVALID_PARAMETER, "A parameter is not valid."},
    {ERROR_INSUFFICIENT_BUFFER, "The buffer is too small for the result."},
    {ERROR_MOD_NOT_FOUND, "The module could not be found."},
    {ERROR_PROC_NOT_FOUND, "The module does not have the function."},
    {ERROR_BAD_ARGUMENTS, "An argument is not correct."},
    {ERROR_FILE_TOO_LARGE, "The file or response is larger than is allowed."},
    {ERROR_MORE_DATA, "There is more data than the buffer holds."},
    {ERROR_NO_MORE_ITEMS, "There are no further items."},
    {ERROR_MR_MID_NOT_FOUND, "There is no message with this number."},
    {ERROR_INVALID_FLAGS, "The flags are not valid."},
    {ERROR_NO_UNICODE_TRANSLATION, "The text has a character without a Unicode counterpart."},
    {ERROR_NOT_FOUND, "The element was not found."},
    {ERROR_INTERNAL_ERROR, "Something failed inside a library."},
    {ERROR_NO_SYSTEM_RESOURCES, "The system lacks what the operation needs."},
    {ERROR_TIMEOUT, "The time allowed for the operation has run out."},
    {ERROR_NOT_ENOUGH_QUOTA, "The quota for this operation is used up."},
    {ERROR_INTERNET_INVALID_URL, "The URL is not valid."},
    {ERROR_INTERNET_UNRECOGNIZED_SCHEME, "The scheme of the URL is not known or not allowed."},
    {ERROR_INTERNET_NAME_NOT_RESOLVED, "The name of the server cannot be resolved."},
    {ERROR_INTERNET_CANNOT_CONNECT, "The server cannot be connected to."},
    {ERROR_INTERNET_CONNECTION_ABORTED, "The connection ended before the response was complete."},
    {ERROR_HTTP_REDIRECT_FAILED, "The server redirects too often or to what is not allowed."},
    {ERROR_INTERNET_SECURITY_CHANNEL_ERROR, "The server cannot be connected to securely."},

    {E_NOTIMPL, "The operation is not implemented."},
    {E_NOINTERFACE, "The object does not have this interface."},
    {E_POINTER, "A pointer is not valid."},
    {E_FAIL, "The operation failed for a reason that was not told."},
    {E_UNEXPECTED, "The failure is a one that nobody expected."},
    {RPC_E_CHANGED_MODE, "The thread has entered COM in another mode."},
    {DISP_E_TYPEMISMATCH, "The value has another type than is wanted."},
    {DISP_E_BADVARTYPE, "The type of the value is not known."},
    {CLASS_E_NOAGGREGATION, "The class makes no objects that are part of another."},
    {CLASS_E_CLASSNOTAVAILABLE, "The component does not have the class."},
    {REGDB_E_CLASSNOTREG, "The class is not registered."},
    {CO_E_NOTINITIALIZED, "COM was not initialised in this thread."},
    {CO_E_DLLNOTFOUND, "There is no library of the component."},
    {CO_E_ERRORINDLL, "The library of the component lacks the function that gives its classes."},

    {NTE_BAD_UID, "The provider handle is not valid."},
    {NTE_BAD_HASH, "The hash is not valid."},
    {NTE_BAD_KEY, "The key is not valid."},
    {NTE_BAD_LEN, "The length is not valid."},
    {NTE_BAD_DATA, "The data given to the provider is not valid."},
    {NTE_BAD_SIGNATURE, "The signature does not verify."},
    {NTE_BAD_VER, "The provider has another version."},
    {NTE_BAD_ALGID, "The algorithm is not valid here."},
    {NTE_BAD_FLAGS, "The flags given to the provider are not valid."},
    {NTE_BAD_TYPE, "The type is not valid."},
    {NTE_BAD_HASH_STATE, "The hash is not in a state for this use."},
    {NTE_NO_KEY, "The key does not exist."},
    {NTE_NO_MEMORY, "The provider has not enough memory."},
    {NTE_NOT_FOUND, "The object was not found."},
    {NTE_BAD_PROVIDER, "The provider is not valid."},
    {NTE_BAD_PROV_TYPE, "The provider type is not valid."},
    {NTE_BAD_PUBLIC_KEY, "The public key is not valid."},
    {NTE_BAD_KEYSET, "The key container does not exist."},
    {NTE_PROV_TYPE_NOT_DEF, "The provider type is not defined."},
    {NTE_KEYSET_NOT_DEF, "The provider of this name is not defined."},
    {NTE_PROV_TYPE_NO_MATCH, "The provider is of another type."},
    {NTE_PROVIDER_DLL_FAIL, "The library of the provider could not be started."},
    {NTE_PROV_DLL_NOT_FOUND, "The library of the provider could not be found."},
    {NTE_FAIL, "The provider had an internal failure."},

    {CRYPT_E_UNKNOWN_ALGO, "The cryptographic algorithm is not known."},
    {CRYPT_E_HASH_VALUE, "The hash value is not correct."},
    {CRYPT_E_BAD_LEN, "The length given for the output is not correct."},
    {CRYPT_E_BAD_ENCODE, "The encoding or decoding met an error."},
    {CRYPT_E_FILE_ERROR, "Reading or writing a file met an error."},
    {CRYPT_E_NOT_FOUND, "The object or property does not exist."},
    {CRYPT_E_EXISTS, "The object or property exists already."},
    {CRYPT_E_NO_PROVIDER, "The store or object has no provider."},
    {CRYPT_E_SELF_SIGNED, "The certificate is self-signed."},
    {CRYPT_E_DELETED_PREV, "The previous certificate or CRL was deleted."},
    {CRYPT_E_NO_MATCH, "Nothing matches."},
    {CRYPT_E_PENDING_CLOSE, "The store is closed, but objects of it are still in use."},
    {CRYPT_E_REVOKED, "The certificate is revoked."},
    {CRYPT_E_NO_REVOCATION_DLL, "No library or function for revocation checks was found."},
    {CRYPT_E_NO_REVOCATION_CHECK, "The revocation of the certificate could not be checked."},
    {CRYPT_E_REVOCATION_OFFLINE, "The source of revocation information was offline."},
    {CRYPT_E_NOT_IN_REVOCATION_DATABASE, "The revocation server does not know the certificate."},
    {CRYPT_E_INVALID_NUMERIC_STRING, "The text has a character that is not numeric."},
    {CRYPT_E_INVALID_PRINTABLE_STRING, "The text has a character that is not printable."},
    {CRYPT_E_INVALID_IA5_STRING, "The text has a character outside 7-bit ASCII."},
    {CRYPT_E_INVALID_X500_STRING, "The X.500 name text is not valid."},

    {CRYPT_E_ASN1_ERROR, "ASN.1: the encoding or decoding met an error."},
    {CRYPT_E_ASN1_INTERNAL, "ASN.1: internal error."},
    {CRYPT_E_ASN1_EOD, "ASN.1: the data ends too early."},
    {CRYPT_E_ASN1_CORRUPT, "ASN.1: the data is corrupt."},
    {CRYPT_E_ASN1_LARGE, "ASN.1: the value is too large."},
    {CRYPT_E_ASN1_CONSTRAINT, "ASN.1: a constraint is violated."},
    {CRYPT_E_ASN1_MEMORY, "ASN.1: not enough memory."},
    {CRYPT_E_ASN1_OVERFLOW, "ASN.1: the buffer is too small."},
    {CRYPT_E_ASN1_BADPDU, "ASN.1: this structure has no encoding here."},
    {CRYPT_E_ASN1_BADARGS, "ASN.1: an argument is not correct."},
    {CRYPT_E_ASN1_BADTAG, "ASN.1: the tag is not the expected one."},
    {CRYPT_E_ASN1_CHOICE, "ASN.1: the alternative of a choice is not known."},
    {CRYPT_E_ASN1_RULE, "ASN.1: the encoding rules are not known."},
    {CRYPT_E_ASN1_UTF8, "ASN.1: the UTF-8 text is not well formed."},
    {CRYPT_E_ASN1_EXTENDED, "ASN.1: unknown extensions were skipped."},
    {CRYPT_E_ASN1_NOEOD, "ASN.1: more data follows the value."},

    {HTTP_E_STATUS_FIRST + 403, "The server does not permit access: status 403 of HTTP."},
    {HTTP_E_STATUS_FIRST + 404, "The server does not have the resource: status 404 of HTTP."},
    {HTTP_E_STATUS_FIRST + 500, "The server has an internal error: status 500 of HTTP."},
    {HTTP_E_STATUS_FIRST + 503, "The server is not available: status 503 of HTTP."},
};
static_assert(std::ranges::adjacent_find(descriptions, std::ranges::greater_equal{},
                                         &Description::code) == std::end(descriptions));

constexpr std::string_view line_end = "\r\n";

/// An HRESULT of the Win32 facility stands for the system error in its low half.
constexpr DWORD without_win32_facility(DWORD code) noexcept {
    constexpr DWORD facility_mask = 0xFFFF0000;
    constexpr DWORD win32_facility = 0x80070000;
    return (code & facility_mask) == win32_facility ? code & ~facility_mask : code;
}

} // namespace

DWORD FormatMessageA(DWORD dwFlags, LPCVOID /*lpSource*/, DWORD dwMessageId, DWORD /*dwLanguageId*/,
                     LPSTR lpBuffer, DWORD nSize, va_list* /*Arguments*/) noexcept {
    if ((dwFlags | FORMAT_MESSAGE_IGNORE_INSERTS) !=
            (FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS) ||
        lpBuffer == nullptr) {
        return norvane::fail<DWORD>(ERROR_INVALID_PARAMETER);
    }
    const DWORD code = without_win32_facility(dwMessageId);
    const auto* found = std::ranges::lower_bound(descriptions, code, {}, &Description::code);
    if (found == std::end(descriptions) || found->code != code) {
        return norvane::fail<DWORD>(ERROR_MR_MID_NOT_FOUND);
    }
    const std::size_t length = found->text.size() + line_end.size();
    if (length >= nSize) {
        return norvane::fail<DWORD>(ERROR_INSUFFICIENT_BUFFER);
    }
    char* end = std::ranges::copy(found->text, lpBuffer).out;
    end = std::ranges::copy(line_end, end).out;
    *end = '\0';
    return static_cast<DWORD>(length);
}
