#pragma once

#include "asn1/ByteView.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace norvane {

/// An input that cannot be read; `what` is the reason, without the name of the input.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The content of a file, a pipe or standard input. A regular file is mapped, so its pages are the
/// system's and go with this object; it must not be made shorter meanwhile.
class FileContent {
  public:
    /// Throws InputError. A folder, and more than the platform takes of a file, are faults.
    [[nodiscard]] static FileContent of_file(const std::string& path);
    [[nodiscard]] static FileContent of_standard_input();

    FileContent(const FileContent&) = delete;
    FileContent& operator=(const FileContent&) = delete;
    FileContent(FileContent&& other) noexcept;
    FileContent& operator=(FileContent&&) = delete;
    ~FileContent();

    [[nodiscard]] ByteView bytes() const noexcept {
        return mapping_ != nullptr
                   ? ByteView{static_cast<const std::uint8_t*>(mapping_), mapped_}
                   : ByteView{read_.data(), static_cast<std::uint32_t>(read_.size())};
    }

  private:
    FileContent() = default;

    void read_from(int descriptor);

    void* mapping_ = nullptr;
    std::uint32_t mapped_ = 0;
    std::vector<std::uint8_t> read_;
};

} // namespace norvane
