#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Thrown where this process fails, and not what it looks at: such a failure says nothing about a
/// server, a response or a file, and must never pass for one that does.
struct OwnFailure {
    DWORD error; ///< the last error for it
};

/// Whether a last error is one of those that stand for failures of this process.
[[nodiscard]] bool is_own_failure(DWORD error) noexcept;

/// The last error for an `errno` that tells of this process or its system: want of memory, of
/// descriptors or of buffers, or a device that does not work. `ERROR_SUCCESS` for all others.
[[nodiscard]] DWORD own_failure_of(int error_number) noexcept;

} // namespace norvane
