#include "platform/config/FileText.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace norvane {
namespace {

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

FileFault fault_of(int error) {
    return {"the file cannot be read: " + std::generic_category().message(error)};
}

} // namespace

std::variant<std::string, FileAbsent, FileFault> read_file_text(const std::filesystem::path& path,
                                                                std::size_t max_size) {
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
        return FileFault{"this is not a regular file"};
    }
    std::string text;
    std::array<char, 4096> block{};
    while (text.size() <= max_size) {
        const ssize_t count = read(file.number(), block.data(), block.size());
        if (count == 0) {
            return text;
        }
        if (count < 0 && errno != EINTR) {
            return fault_of(errno);
        }
        text.append(block.data(), static_cast<std::size_t>(count < 0 ? 0 : count));
    }
    return FileFault{"the file is larger than " + std::to_string(max_size) + " bytes"};
}

} // namespace norvane
