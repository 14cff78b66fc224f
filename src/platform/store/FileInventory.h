#pragma once

#include "platform/UnreadableFile.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace norvane {

/// A file of a store, with what tells one state of it from another.
struct InventoryFile {
    std::filesystem::path path;
    int error = 0; ///< errno of why there is nothing to read; 0 if it is a regular file.
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modified_ns = 0; ///< Since 1970.
    std::int64_t changed_ns = 0;  ///< Since 1970; the system sets it at every change.

    [[nodiscard]] bool operator==(const InventoryFile&) const = default;
};

using FileInventory = std::vector<InventoryFile>;

/// The files at `paths` and in those of them that are folders, but not in folders within. The order
/// is that of the paths, and of the names in each folder; names that begin with a dot are left out,
/// and so are paths at which there is nothing. Throws UnreadableFile.
[[nodiscard]] FileInventory take_inventory(std::span<const std::filesystem::path> paths);

/// Whether a file may yet change without its state showing it: see is_settled.
[[nodiscard]] bool is_unsettled(const FileInventory& files,
                                std::chrono::system_clock::time_point now);

} // namespace norvane
