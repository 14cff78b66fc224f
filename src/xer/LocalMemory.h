#pragma once

#include <norvane/wincrypt.h>

#include <utility>

namespace norvane {

/// A block of the platform's memory, filled with zeros, that is released unless somebody takes it.
/// Releasing leaves the last error as it is.
class LocalMemory {
  public:
    /// Null, with the platform's last error, if there is no such block.
    explicit LocalMemory(SIZE_T size) : block_(static_cast<BYTE*>(LocalAlloc(LPTR, size))) {}
    LocalMemory(const LocalMemory&) = delete;
    LocalMemory& operator=(const LocalMemory&) = delete;
    ~LocalMemory() {
        const DWORD error = GetLastError();
        LocalFree(block_);
        SetLastError(error);
    }

    [[nodiscard]] bool is_null() const { return block_ == nullptr; }
    [[nodiscard]] BYTE* data() const { return block_; }

    /// The block, which the caller has to release with LocalFree.
    [[nodiscard]] BYTE* release() { return std::exchange(block_, nullptr); }

  private:
    BYTE* block_;
};

} // namespace norvane
