#include "FileContent.h"

#include "platform/Descriptor.h"
#include "platform/store/ObjectFile.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace norvane {
namespace {

InputError system_fault() { return InputError(std::generic_category().message(errno)); }

InputError too_large() {
    return InputError("larger than " + std::to_string(max_object_file_size >> 20U) + " MiB");
}

int open_file(const std::string& path) {
    const int number = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (number < 0) {
        throw system_fault();
    }
    return number;
}

} // namespace

FileContent FileContent::of_file(const std::string& path) {
    const Descriptor file(open_file(path));
    struct stat status {};
    if (fstat(file.number(), &status) != 0) {
        throw system_fault();
    }
    FileContent content;
    if (!S_ISREG(status.st_mode) || status.st_size == 0) {
        content.read_from(file.number());
        return content;
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (size > max_object_file_size) {
        throw too_large();
    }
    // All of it will be read, so the system may bring it at once.
    constexpr int flags = MAP_PRIVATE | MAP_POPULATE;
    void* const place = mmap(nullptr, size, PROT_READ, flags, file.number(), 0);
    if (place == MAP_FAILED) {
        throw system_fault();
    }
    content.mapping_ = place;
    content.mapped_ = static_cast<std::uint32_t>(size);
    return content;
}

FileContent FileContent::of_standard_input() {
    FileContent content;
    content.read_from(STDIN_FILENO);
    return content;
}

FileContent::FileContent(FileContent&& other) noexcept
    : mapping_(std::exchange(other.mapping_, nullptr)), mapped_(std::exchange(other.mapped_, 0)),
      read_(std::move(other.read_)) {}

FileContent::~FileContent() {
    if (mapping_ != nullptr) {
        munmap(mapping_, mapped_);
    }
}

void FileContent::read_from(int descriptor) {
    std::array<std::uint8_t, 65'536> block{};
    for (;;) {
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count == 0) {
            return;
        }
        if (count > 0) {
            read_.insert(read_.end(), block.begin(), block.begin() + count);
        } else if (errno != EINTR) {
            throw system_fault();
        }
        if (read_.size() > max_object_file_size) {
            throw too_large();
        }
    }
}

} // namespace norvane
