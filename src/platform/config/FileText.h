#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <variant>

namespace norvane {

/// Larger configuration files are refused.
inline constexpr std::size_t max_configuration_file_size = 1'048'576;

struct FileAbsent {};

/// Why a file could not be read, in words.
struct FileFault {
    std::string text;
};

/// Reads a whole regular file of at most `max_size` bytes. Never waits: a pipe or a device is a
/// fault.
[[nodiscard]] std::variant<std::string, FileAbsent, FileFault>
read_file_text(const std::filesystem::path& path, std::size_t max_size);

} // namespace norvane
