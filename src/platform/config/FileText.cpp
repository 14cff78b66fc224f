#include "platform/config/FileText.h"

#include "platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace norvane {
namespace {

FileFault fault_of(int error) {
    return {"the file cannot be read: " + std::generic_category().message(error), error};
}

/// A block that grows, when a file has become longer than the system said.
class Block {
  public:
    Block(std::size_t size, PrepareBlock prepare) : prepare_(prepare) { move_to(size); }

    /// Where the next octets go; at least one has room.
    [[nodiscard]] std::uint8_t* end() {
        if (used_ == size_) {
            move_to(2 * size_);
        }
        return bytes_.get() + used_;
    }
    [[nodiscard]] std::size_t room() const noexcept { return size_ - used_; }
    void add(std::size_t count) noexcept { used_ += count; }
    [[nodiscard]] std::size_t used() const noexcept { return used_; }
    [[nodiscard]] FileBytes take() { return {std::move(bytes_), used_}; }

  private:
    void move_to(std::size_t size) {
        auto larger = std::make_unique_for_overwrite<std::uint8_t[]>(size);
        if (prepare_ != nullptr) {
            prepare_(larger.get(), size);
        }
        std::copy_n(bytes_.get(), used_, larger.get());
        bytes_ = std::move(larger);
        size_ = size;
    }

    PrepareBlock prepare_;
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
    std::size_t used_ = 0;
};

} // namespace

std::variant<FileBytes, FileFault> read_to_end(int descriptor, std::size_t expected_size,
                                               std::size_t max_size, PrepareBlock prepare) {
    // One octet more, so that the end of the file is seen without another block.
    Block block(std::min(expected_size, max_size) + 1, prepare);
    while (block.used() <= max_size) {
        std::uint8_t* const end = block.end();
        const ssize_t count = read(descriptor, end, block.room());
        if (count == 0) {
            return block.take();
        }
        if (count < 0 && errno != EINTR) {
            return fault_of(errno);
        }
        block.add(static_cast<std::size_t>(count < 0 ? 0 : count));
    }
    return FileFault{"the file is larger than " + std::to_string(max_size) + " bytes", 0};
}

std::variant<FileBytes, FileAbsent, FileFault>
read_file_bytes(const std::filesystem::path& path, std::size_t max_size, PrepareBlock prepare) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.number() < 0) {
        const int error = errno;
        if (error == ENOENT || error == ENOTDIR) {
            return FileAbsent{};
        }
        return fault_of(error);
    }
    struct stat status {};
    if (fstat(file.number(), &status) != 0) {
        return fault_of(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return FileFault{"this is not a regular file", 0};
    }
    auto outcome =
        read_to_end(file.number(), static_cast<std::size_t>(status.st_size), max_size, prepare);
    if (auto* const fault = std::get_if<FileFault>(&outcome)) {
        return std::move(*fault);
    }
    return std::get<FileBytes>(std::move(outcome));
}

std::variant<std::string, FileAbsent, FileFault> read_file_text(const std::filesystem::path& path,
                                                                std::size_t max_size) {
    auto outcome = read_file_bytes(path, max_size);
    if (const auto* const bytes = std::get_if<FileBytes>(&outcome)) {
        return std::string(bytes->octets.get(), bytes->octets.get() + bytes->size);
    }
    if (auto* const fault = std::get_if<FileFault>(&outcome)) {
        return std::move(*fault);
    }
    return FileAbsent{};
}

} // namespace norvane
