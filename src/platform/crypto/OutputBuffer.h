#pragma once

#include "platform/failure.h"

#include <cstring>

namespace norvane {

/// Gives `size` bytes to the caller under the platform's protocol of sizes: `*buffer_size` tells
/// the size of `buffer` and receives the one that is needed; a null buffer only asks for it.
[[nodiscard]] inline BOOL give_bytes(const void* bytes, DWORD size, void* buffer,
                                     DWORD* buffer_size) noexcept {
    const DWORD capacity = buffer != nullptr ? *buffer_size : size;
    *buffer_size = size;
    if (capacity < size) {
        return fail(ERROR_MORE_DATA);
    }
    if (buffer != nullptr) {
        std::memcpy(buffer, bytes, size);
    }
    return TRUE;
}

/// The same for text with its terminator.
[[nodiscard]] inline BOOL give_text(const char* text, void* buffer, DWORD* buffer_size) noexcept {
    return give_bytes(text, static_cast<DWORD>(std::strlen(text) + 1), buffer, buffer_size);
}

} // namespace norvane
