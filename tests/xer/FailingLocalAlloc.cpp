// The platform's memory in this program: a block counts as one allocation of operator new, which
// FailingNew.h makes fail.
#include <norvane/wincrypt.h>

#include <cstdlib>
#include <new>

HLOCAL LocalAlloc(UINT /*uFlags*/, SIZE_T uBytes) noexcept {
    try {
        ::operator delete(::operator new(1));
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return std::calloc(1, uBytes);
}
