#pragma once

#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

/// Closes an open file at the end of a scope. Negative: there is none.
class Descriptor {
  public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    [[nodiscard]] int number() const noexcept { return number_; }

  private:
    int number_;
};

/// Whether a file or folder is this user's, and nobody else may write to it.
[[nodiscard]] inline bool is_private(const struct stat& status) noexcept {
    return status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace norvane
