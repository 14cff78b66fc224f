#pragma once

#include "platform/SystemFailure.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace norvane {

/// A file or folder that is there, but cannot be read now.
class UnreadableFile : public SystemFailure {
  public:
    UnreadableFile(std::filesystem::path path, int error)
        : SystemFailure(last_error_of(error), std::generic_category().message(error)),
          path_(std::move(path)) {}

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace norvane
