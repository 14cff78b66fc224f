#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Sets the last error and gives what an export answers then.
inline BOOL fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

} // namespace norvane
