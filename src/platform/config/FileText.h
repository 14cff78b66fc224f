#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

namespace norvane {

/// Larger configuration files are refused.
inline constexpr std::size_t max_configuration_file_size = 1'048'576;

struct FileAbsent {};

/// Why a file could not be read.
struct FileFault {
    std::string text; ///< In words.
    int error = 0;    ///< The system's errno; 0 if the file is not one that is read.
};

/// The octets of a file in a block of their own.
struct FileBytes {
    std::unique_ptr<std::uint8_t[]> octets;
    std::size_t size = 0;
};

/// Is shown a block of memory before it is filled.
using PrepareBlock = void (*)(void* block, std::size_t size);

/// Reads all that is left of an open file or stream, waiting where it makes wait.
/// @param expected_size octets that there seem to be; how many there are is seen at the end.
[[nodiscard]] std::variant<FileBytes, FileFault> read_to_end(int descriptor,
                                                             std::size_t expected_size,
                                                             std::size_t max_size,
                                                             PrepareBlock prepare = nullptr);

/// Reads a whole regular file of at most `max_size` bytes. Never waits: a pipe or a device is a
/// fault.
[[nodiscard]] std::variant<FileBytes, FileAbsent, FileFault>
read_file_bytes(const std::filesystem::path& path, std::size_t max_size,
                PrepareBlock prepare = nullptr);

/// The same as text.
[[nodiscard]] std::variant<std::string, FileAbsent, FileFault>
read_file_text(const std::filesystem::path& path, std::size_t max_size);

} // namespace norvane
