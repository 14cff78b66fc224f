#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// What `TlsAlloc` answers when no index is left.
#define TLS_OUT_OF_INDEXES 0xFFFFFFFFU

NORVANE_PLATFORM_BEGIN

/// Reserves an index under which each thread keeps one pointer, null at first in every thread.
///
/// Indexes are keys of the C library's own thread storage, which all users in the process share:
/// PTHREAD_KEYS_MAX in all, 1,024 with glibc. The pointers are plain values; nothing is released
/// when a thread ends.
///
/// @return the index, to be released with `TlsFree`; `TLS_OUT_OF_INDEXES` with the last error
///     `ERROR_NO_MORE_ITEMS` if all are in use.
DWORD TlsAlloc(void) NORVANE_PLATFORM_API(TlsAlloc);

/// Releases an index. No thread may use it at the same time or later.
///
/// @return FALSE with the last error `ERROR_INVALID_PARAMETER` for an index that is not reserved.
BOOL TlsFree(DWORD dwTlsIndex) NORVANE_PLATFORM_API(TlsFree);

/// The calling thread's pointer under an index.
///
/// @return the pointer, which may be null; so success sets the last error to `ERROR_SUCCESS`. Null
///     with `ERROR_INVALID_PARAMETER` for an index that is not reserved.
LPVOID TlsGetValue(DWORD dwTlsIndex) NORVANE_PLATFORM_API(TlsGetValue);

/// Sets the calling thread's pointer under an index; what it points to stays the caller's.
///
/// @return FALSE with the last error `ERROR_INVALID_PARAMETER` for an index that is not reserved,
///     or `ERROR_NOT_ENOUGH_MEMORY`.
BOOL TlsSetValue(DWORD dwTlsIndex, LPVOID lpTlsValue) NORVANE_PLATFORM_API(TlsSetValue);

NORVANE_PLATFORM_END
