#pragma once

#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

/// Whether a file or folder is this user's, and nobody else may write to it.
[[nodiscard]] inline bool is_private(const struct stat& status) noexcept {
    return status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace norvane
