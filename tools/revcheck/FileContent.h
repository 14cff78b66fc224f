#pragma once

#include "asn1/ByteView.h"
#include "platform/WholeFile.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace norvane {

/// An input that cannot be read; `what` is the reason, without the name of the input.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// How a file came to be read: a pipe that somebody names is meant, one that lies in a folder is
/// not, and waiting for its writer could take for ever.
enum class FileOrigin : std::uint8_t { named, in_folder };

/// The content of a file, a pipe or standard input, in memory of its own: what others do to the
/// file while it is looked at does no harm.
class FileContent {
  public:
    /// Throws InputError. A folder, more than the platform takes of a file and, in a folder, what
    /// is not a regular file are faults.
    [[nodiscard]] static FileContent of_file(const std::string& path, FileOrigin origin);
    [[nodiscard]] static FileContent of_standard_input();

    [[nodiscard]] ByteView bytes() const noexcept {
        return {bytes_.octets.get(), static_cast<std::uint32_t>(bytes_.size)};
    }

  private:
    explicit FileContent(FileBytes bytes) noexcept : bytes_(std::move(bytes)) {}

    FileBytes bytes_;
};

} // namespace norvane
