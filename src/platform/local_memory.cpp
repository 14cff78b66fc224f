#include "platform/failure.h"

#include <algorithm>
#include <cstdlib>

HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes) noexcept {
    if (uFlags != LMEM_FIXED && uFlags != LPTR) {
        return norvane::fail<HLOCAL>(ERROR_INVALID_PARAMETER);
    }
    // The C library may answer a request of no bytes with null, which here means failure.
    const SIZE_T size = std::max<SIZE_T>(uBytes, 1);
    HLOCAL block = uFlags == LPTR ? std::calloc(1, size) : std::malloc(size);
    return block != nullptr ? block : norvane::fail<HLOCAL>(ERROR_NOT_ENOUGH_MEMORY);
}

HLOCAL LocalFree(HLOCAL hMem) noexcept {
    std::free(hMem);
    return nullptr;
}
