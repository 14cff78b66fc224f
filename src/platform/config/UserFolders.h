#pragma once

#include <filesystem>

namespace norvane {

/// The user's folders as XDG base directories lay them down. Each is empty if it is not known,
/// and all are in set-uid programs, in which the environment is not to be trusted.
struct UserFolders {
    std::filesystem::path home;
    std::filesystem::path config; ///< for the files of this product
    std::filesystem::path cache;  ///< for the files of this product
};

[[nodiscard]] UserFolders user_folders();

/// A variable of the environment; null if it is not set, and for all in set-uid programs.
[[nodiscard]] const char* trusted_environment(const char* name) noexcept;

} // namespace norvane
