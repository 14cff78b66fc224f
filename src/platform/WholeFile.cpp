#include "platform/WholeFile.h"

#include "platform/Descriptor.h"
#include "platform/UnreadableFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace norvane {
namespace {

FileFault fault_of(int error) {
    if (error == ENOENT || error == ENOTDIR) {
        return {.kind = FileFault::Kind::absent, .text = "there is no such file"};
    }
    return {.kind = FileFault::Kind::refused,
            .text = "the file cannot be read: " + std::generic_category().message(error),
            .error = error};
}

FileFault too_large(std::size_t max_size) {
    return {.kind = FileFault::Kind::too_large,
            .text = "the file is larger than " + std::to_string(max_size) + " bytes"};
}

[[noreturn]] void throw_unreadable(const std::filesystem::path& path, int error) {
    if (error == ENOMEM) {
        throw std::bad_alloc();
    }
    throw UnreadableFile(path, error);
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
    return too_large(max_size);
}

std::variant<WholeFile, FileFault> read_whole_file(const std::filesystem::path& path,
                                                   const ReadRules& rules) {
    const Descriptor file(
        open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | rules.more_flags));
    WholeFile whole;
    if (file.number() < 0 || fstat(file.number(), &whole.status) != 0) {
        const int error = errno;
        if (own_failure_of(error) != ERROR_SUCCESS) {
            throw_unreadable(path, error);
        }
        return fault_of(error);
    }
    if (!S_ISREG(whole.status.st_mode)) {
        return FileFault{.kind = FileFault::Kind::foreign, .text = "this is not a regular file"};
    }
    if (rules.is_trusted != nullptr && !rules.is_trusted(whole.status)) {
        return FileFault{.kind = FileFault::Kind::foreign, .text = "the file is not trusted"};
    }
    if (static_cast<std::uintmax_t>(whole.status.st_size) > rules.max_size) {
        return too_large(rules.max_size);
    }
    auto outcome = read_to_end(file.number(), static_cast<std::size_t>(whole.status.st_size),
                               rules.max_size, rules.prepare);
    if (auto* const fault = std::get_if<FileFault>(&outcome)) {
        if (fault->kind != FileFault::Kind::too_large) {
            throw_unreadable(path, fault->error);
        }
        return std::move(*fault);
    }
    whole.bytes = std::get<FileBytes>(std::move(outcome));
    return whole;
}

} // namespace norvane
