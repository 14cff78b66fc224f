#pragma once

#include <norvane/wincrypt.h>

#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>

namespace norvane {

/// A failure of the process or of the system, as against a fact about what was asked for. Want of
/// memory is std::bad_alloc.
class SystemFailure : public std::runtime_error {
  public:
    /// @param last_error what a platform function that this ends fails with.
    SystemFailure(DWORD last_error, const std::string& text)
        : std::runtime_error(text), last_error_(last_error) {}

    [[nodiscard]] DWORD last_error() const noexcept { return last_error_; }

  private:
    DWORD last_error_;
};

/// The last error for an errno that tells of the process or its system: want of memory, of
/// descriptors or of buffers, or a device that does not work. `ERROR_SUCCESS` for all others.
[[nodiscard]] constexpr DWORD own_failure_of(int error) noexcept {
    switch (error) {
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EIO:
        return ERROR_READ_FAULT;
    case EAGAIN:
    case ENOBUFS:
        return ERROR_NO_SYSTEM_RESOURCES;
    default:
        return ERROR_SUCCESS;
    }
}

/// Whether a last error is one that own_failure_of gives, or stands for a fault within a library.
[[nodiscard]] constexpr bool is_own_failure(DWORD error) noexcept {
    switch (error) {
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_READ_FAULT:
    case ERROR_INTERNAL_ERROR:
    case ERROR_NO_SYSTEM_RESOURCES:
        return true;
    default:
        return false;
    }
}

/// The last error for any errno with which the system refused to show what is there.
[[nodiscard]] constexpr DWORD last_error_of(int error) noexcept {
    const DWORD own = own_failure_of(error);
    return own == ERROR_SUCCESS ? ERROR_READ_FAULT : own;
}

/// Throws what the errno stands for: std::bad_alloc or SystemFailure.
[[noreturn]] inline void throw_system_failure(int error, const std::string& text) {
    if (error == ENOMEM) {
        throw std::bad_alloc();
    }
    throw SystemFailure(last_error_of(error), text);
}

} // namespace norvane
