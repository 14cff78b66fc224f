#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// Code pages. The default one (`CP_ACP`) of Linux is ISO 8859-1, whatever the locale: every byte
/// is a character, and the outcome does not depend on the machine.
#define CP_ACP 0U
#define CP_UTF8 65001U

/// Flags of `MultiByteToWideChar`.
#define MB_PRECOMPOSED 0x00000001U
#define MB_ERR_INVALID_CHARS 0x00000008U

NORVANE_PLATFORM_BEGIN

/// Converts text of a code page to UTF-16.
///
/// Characters beyond the basic plane become surrogate pairs. In UTF-8, each maximal part of an
/// ill-formed sequence (overlong forms, surrogates and values above U+10FFFF included) becomes one
/// U+FFFD, as chapter 3.9 of the Unicode Standard recommends, or fails the call.
///
/// @param CodePage `CP_ACP` or `CP_UTF8`.
/// @param dwFlags `MB_ERR_INVALID_CHARS` to fail at an ill-formed sequence, else 0.
///     `MB_PRECOMPOSED`, the default, may be given with `CP_ACP`.
/// @param lpMultiByteStr the text; must not be the output buffer.
/// @param cbMultiByte its length in bytes, zero bytes are characters like others; or -1 for text up
///     to and including its terminator, which then is converted and counted too.
/// @param lpWideCharStr receives the units. No terminator is added. Null is allowed if
///     `cchWideChar` is 0. On failure the content is undefined.
/// @param cchWideChar size of `lpWideCharStr` in units; 0 only asks for the size that is needed.
/// @return count of units written or needed. 0 on failure, with the last error
///     `ERROR_INVALID_PARAMETER` (another code page; a null or empty text; a length below -1 or
///     text of more than 2^31-1 bytes; a negative size; a null or equal buffer),
///     `ERROR_INVALID_FLAGS`,
///     `ERROR_NO_UNICODE_TRANSLATION` (ill-formed text and `MB_ERR_INVALID_CHARS`) or
///     `ERROR_INSUFFICIENT_BUFFER`.
int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte,
                        LPWSTR lpWideCharStr, int cchWideChar)
    NORVANE_PLATFORM_API(MultiByteToWideChar);

/// Converts UTF-16 to UTF-8. A surrogate without its partner becomes U+FFFD.
///
/// @param CodePage `CP_UTF8`.
/// @param dwFlags 0.
/// @param cchWideChar length of the text in units, from 1 up.
/// @param lpMultiByteStr receives the bytes. No terminator is added. Null is allowed if
///     `cbMultiByte` is 0.
/// @param cbMultiByte size of `lpMultiByteStr` in bytes; 0 only asks for the size that is needed.
/// @param lpDefaultChar null, as UTF-8 has all characters.
/// @param lpUsedDefaultChar null.
/// @return count of bytes written or needed. 0 on failure, with the last error
///     `ERROR_INVALID_PARAMETER` (any other argument), `ERROR_INSUFFICIENT_BUFFER` or
///     `ERROR_NOT_ENOUGH_MEMORY`.
int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar,
                        LPSTR lpMultiByteStr, int cbMultiByte, LPCSTR lpDefaultChar,
                        BOOL* lpUsedDefaultChar) NORVANE_PLATFORM_API(WideCharToMultiByte);

NORVANE_PLATFORM_END
