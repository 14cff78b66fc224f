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

/// The last error for an errno with which the system refused to show what is there.
[[nodiscard]] constexpr DWORD last_error_of(int error) noexcept {
    switch (error) {
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    default:
        return ERROR_READ_FAULT;
    }
}

/// Throws what the errno stands for: std::bad_alloc or SystemFailure.
[[noreturn]] inline void throw_system_failure(int error, const std::string& text) {
    if (error == ENOMEM) {
        throw std::bad_alloc();
    }
    throw SystemFailure(last_error_of(error), text);
}

} // namespace norvane
