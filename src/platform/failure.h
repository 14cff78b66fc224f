#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Ends a platform function that failed: sets the calling thread's last error, and gives the zero
/// of the function's result (FALSE, 0, null).
template <typename Result = BOOL>
[[nodiscard]] Result fail(DWORD code) noexcept {
    SetLastError(code);
    return Result{};
}

} // namespace norvane
