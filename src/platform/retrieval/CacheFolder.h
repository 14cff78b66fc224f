#pragma once

#include "platform/retrieval/CacheEntry.h"

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <sys/stat.h>

namespace norvane {

/// What tells one state of a cache file from another. No file is ever changed in place, and each
/// gets a time of its own.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modified_ns = 0; ///< since 1970

    [[nodiscard]] bool operator==(const FileIdentity&) const = default;
};

[[nodiscard]] FileIdentity identity_of(const struct stat& status) noexcept;

/// What tells one state of the folder from another: which folder it is, and when a file was last
/// made, renamed or removed in it.
struct FolderState {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t changed_ns = 0; ///< since 1970; the system sets it at every change

    [[nodiscard]] bool operator==(const FolderState&) const = default;
};

/// The folder of the cache, which any number of threads and processes use without a lock: a file
/// comes into being under a temporary name, is synced to the disk, and takes its place at once.
/// Only what bears a name and a content of the cache's is read, replaced or removed.
///
/// The folder must be the user's own and closed to writing by others, and so must be the files.
class CacheFolder {
  public:
    /// The folder need not exist; an empty path stands for none.
    CacheFolder(std::filesystem::path folder, std::uint64_t size_limit)
        : path_(std::move(folder)), size_limit_(size_limit) {}

    /// The one of this process: of NORVANE_CACHE_DIR, or of the configuration.
    [[nodiscard]] static const CacheFolder& instance();

    /// The path of a file of the cache; empty if there is no folder.
    [[nodiscard]] std::string path_of(std::string_view name) const;

    [[nodiscard]] bool is_usable() const;

    /// The state that the folder is in, which no later change leaves as it is. Nothing if the last
    /// change is so recent that a further one need not show, or if there is no folder.
    /// @param now of before the call, so that whatever changes after it bears no earlier time.
    [[nodiscard]] std::optional<FolderState> state(std::time_t now) const noexcept;

    /// Writes a file, then removes others beyond the limit, the least recently used first. Nothing
    /// if it could not be kept; the file that was there before then stays. Throws std::bad_alloc.
    [[nodiscard]] std::optional<FileIdentity> write(std::string_view name,
                                                    const CacheEntry& entry) const;

    /// Writes a file that does not count against the limit, or has it take the place of the one of
    /// its name. As above.
    [[nodiscard]] std::optional<FileIdentity>
    replace(std::string_view name, std::span<const std::span<const std::uint8_t>> pieces) const;

    /// Notes that a file was used, unless it was noted lately.
    static void note_use(const std::string& path, const struct stat& status) noexcept;

  private:
    std::filesystem::path path_;
    std::uint64_t size_limit_; ///< bytes of all files
};

} // namespace norvane
