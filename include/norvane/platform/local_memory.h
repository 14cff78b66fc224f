#pragma once

#include <norvane/platform/linkage.h>
#include <norvane/platform/types.h>

/// Flags of `LocalAlloc`.
#define LMEM_FIXED 0x0000U
#define LMEM_ZEROINIT 0x0040U
#define LPTR 0x0040U

NORVANE_PLATFORM_BEGIN

/// Allocates memory that the caller releases with `LocalFree`, and with nothing else.
///
/// @param uFlags `LMEM_FIXED`, content undefined, or `LPTR`, filled with zeros.
/// @param uBytes size in bytes; 0 gives a block of its own too.
/// @return the block, aligned for any type. Null on failure, with the last error
///     `ERROR_NOT_ENOUGH_MEMORY` or, for any other flag, `ERROR_INVALID_PARAMETER`.
HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes) NORVANE_PLATFORM_API(LocalAlloc);

/// Releases a block from `LocalAlloc`, in any thread. Null is allowed and does nothing.
///
/// @return null, always: there is no failure that could be told.
HLOCAL LocalFree(HLOCAL hMem) NORVANE_PLATFORM_API(LocalFree);

NORVANE_PLATFORM_END
