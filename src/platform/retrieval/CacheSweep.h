#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace norvane {

/// The name under which the file `name` of the cache is written, until it is whole.
[[nodiscard]] std::string temporary_cache_file_name(std::string_view name, std::uint64_t number);

/// Removes responses from the folder of the cache, the least recently used first, until they take
/// `size_limit` bytes at most; `newest` goes last. Removes too what writers left behind that were
/// stopped on the way. Files with other names than the cache gives are left alone and do not count.
void sweep_cache(const std::filesystem::path& path, std::uint64_t size_limit,
                 std::string_view newest);

} // namespace norvane
