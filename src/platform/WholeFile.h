#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <variant>

namespace norvane {

/// The octets of a file in a block of their own.
struct FileBytes {
    std::unique_ptr<std::uint8_t[]> octets;
    std::size_t size = 0;

    [[nodiscard]] std::string_view text() const noexcept {
        return {reinterpret_cast<const char*>(octets.get()), size};
    }
};

struct WholeFile {
    FileBytes bytes;
    struct stat status {}; ///< as the file was opened
};

/// Why a file is not read.
struct FileFault {
    enum class Kind : std::uint8_t {
        absent,    ///< the path leads nowhere
        refused,   ///< the system does not let this user read it
        foreign,   ///< it is not regular, or not trusted
        too_large, ///< beyond the limit
    };

    Kind kind{};
    std::string text = {}; ///< in words
    int error = 0;         ///< the system's errno where it is `refused`
};

/// Is shown a block of memory before it is filled.
using PrepareBlock = void (*)(void* block, std::size_t size);

/// Which files are read, and how.
struct ReadRules {
    std::size_t max_size = 0; ///< bytes
    int more_flags = 0;       ///< of open(2), beside those for reading
    /// Decides by what fstat(2) says whether the file is read; null: all are.
    bool (*is_trusted)(const struct stat&) = nullptr;
    PrepareBlock prepare = nullptr;
};

/// Reads a whole regular file into memory, where nobody can cut it short any more. Never waits for
/// a pipe or a device.
///
/// Throws std::bad_alloc, and UnreadableFile if the failure is one of this process or the device.
[[nodiscard]] std::variant<WholeFile, FileFault> read_whole_file(const std::filesystem::path& path,
                                                                 const ReadRules& rules);

/// Reads all that is left of an open file or stream, waiting where it makes wait. Any failure of
/// the system is a fault with its errno. Throws std::bad_alloc.
///
/// @param expected_size octets that there seem to be; how many there are is seen at the end.
[[nodiscard]] std::variant<FileBytes, FileFault> read_to_end(int descriptor,
                                                             std::size_t expected_size,
                                                             std::size_t max_size,
                                                             PrepareBlock prepare = nullptr);

} // namespace norvane
