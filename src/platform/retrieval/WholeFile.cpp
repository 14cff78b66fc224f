#include "platform/retrieval/WholeFile.h"

#include "platform/Descriptor.h"
#include "platform/SystemFailure.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace norvane {
namespace {

FileRefusal refusal(int error_number) {
    if (const DWORD error = own_failure_of(error_number); error != ERROR_SUCCESS) {
        throw SystemFailure(error, "a file cannot be read");
    }
    return {error_number};
}

} // namespace

std::variant<WholeFile, FileRefusal> read_whole_file(const char* path, int more_flags,
                                                     std::uint64_t size_limit,
                                                     bool (*is_trusted)(const struct stat&)) {
    const Descriptor file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | more_flags));
    WholeFile whole;
    if (file.number() < 0 || fstat(file.number(), &whole.status) != 0) {
        return refusal(errno);
    }
    if (!S_ISREG(whole.status.st_mode) || (is_trusted != nullptr && !is_trusted(whole.status))) {
        return FileRefusal{EACCES};
    }
    const auto size = static_cast<std::uint64_t>(whole.status.st_size);
    if (size > size_limit) {
        return FileRefusal{EFBIG};
    }
    whole.bytes.resize(static_cast<std::size_t>(size));
    std::size_t used = 0;
    while (used < whole.bytes.size()) {
        const ssize_t count =
            read(file.number(), whole.bytes.data() + used, whole.bytes.size() - used);
        if (count == 0) {
            break; // It was cut short meanwhile; whoever reads it finds the end missing.
        }
        if (count < 0 && errno != EINTR) {
            throw SystemFailure(ERROR_READ_FAULT, "a file cannot be read");
        }
        used += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    whole.bytes.resize(used);
    return whole;
}

} // namespace norvane
