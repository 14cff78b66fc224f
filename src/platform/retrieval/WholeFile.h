#pragma once

#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <variant>

namespace norvane {

struct WholeFile {
    std::string bytes;
    struct stat status {}; ///< as the file was opened
};

/// Why a file could not be read: the `errno`, or EFBIG for one beyond the limit and EACCES for one
/// that is not regular or not `trusted`.
struct FileRefusal {
    int error_number;
};

/// Reads a regular file into memory, where nobody can cut it short any more. Never waits for a pipe
/// or a device.
///
/// @param more_flags of open(2), beside those for reading.
/// @param size_limit in bytes.
/// @param is_trusted decides by what fstat(2) says whether the file is read; null: all are.
/// Throws std::bad_alloc, and SystemFailure if the failure is one of this process or the device.
[[nodiscard]] std::variant<WholeFile, FileRefusal>
read_whole_file(const char* path, int more_flags, std::uint64_t size_limit,
                bool (*is_trusted)(const struct stat&) = nullptr);

} // namespace norvane
