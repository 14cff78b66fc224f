#pragma once

#include <norvane/wincrypt.h>

#include <cstring>

namespace norvane {

/// The caller's place for a structure, with the protocol of sizes.
struct StructureBuffer {
    void* info;
    DWORD* size;

    /// Tells the caller the size of the structure. Returns an error code if it does not fit.
    [[nodiscard]] DWORD reserve(DWORD structure_size) const noexcept {
        const DWORD capacity = info != nullptr ? *size : structure_size;
        *size = structure_size;
        return capacity < structure_size ? ERROR_MORE_DATA : ERROR_SUCCESS;
    }

    /// The same for a structure that points nowhere, which is copied if it fits.
    [[nodiscard]] DWORD put(const void* structure, DWORD structure_size) const noexcept {
        const DWORD error = reserve(structure_size);
        if (error == ERROR_SUCCESS && info != nullptr) {
            std::memcpy(info, structure, structure_size);
        }
        return error;
    }
};

} // namespace norvane
