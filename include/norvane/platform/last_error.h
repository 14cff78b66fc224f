#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>
#include <stdarg.h>

/// Flags of `FormatMessageA`: the words come from the system's list; no inserts are filled in.
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x00000200U
#define FORMAT_MESSAGE_FROM_SYSTEM 0x00001000U

NORVANE_PLATFORM_BEGIN

/// The calling thread's last error; `ERROR_SUCCESS` in a new thread. A function that succeeds
/// leaves it alone unless its own text says otherwise.
DWORD GetLastError(void) NORVANE_PLATFORM_API(GetLastError);

/// Sets the calling thread's last error.
void SetLastError(DWORD dwErrCode) NORVANE_PLATFORM_API(SetLastError);

/// Writes the description of an error code, in English and ASCII, with "\r\n" and a terminator.
///
/// A code 0x8007xxxx has the description of the system error xxxx. The texts hold no inserts, so
/// `FORMAT_MESSAGE_IGNORE_INSERTS` makes no difference.
///
/// @param dwFlags `FORMAT_MESSAGE_FROM_SYSTEM`, with or without `FORMAT_MESSAGE_IGNORE_INSERTS`.
/// @param lpSource ignored; may be null.
/// @param dwMessageId the error code.
/// @param dwLanguageId ignored.
/// @param lpBuffer receives the text; the caller owns it. Untouched on failure.
/// @param nSize size of `lpBuffer` in characters, with the terminator.
/// @param Arguments ignored; may be null.
/// @return count of characters written without the terminator. 0 on failure, with the last error
///     `ERROR_INVALID_PARAMETER` (other flags, or a null buffer),
///     `ERROR_MR_MID_NOT_FOUND` (no description of this code) or
///     `ERROR_INSUFFICIENT_BUFFER`.
DWORD FormatMessageA(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId,
                     LPSTR lpBuffer, DWORD nSize, va_list* Arguments)
    NORVANE_PLATFORM_API(FormatMessageA);

NORVANE_PLATFORM_END
