#pragma once

#include <filesystem>

namespace norvane {

/// Where a loadable module lies that the configuration names: an absolute path is that path, and a
/// bare file name a file in folder "norvane" beside the library of the platform. Empty if that
/// library's own place is not known. Throws std::bad_alloc, and SystemFailure if it cannot be found
/// out now.
[[nodiscard]] std::filesystem::path module_path(const std::filesystem::path& name);

} // namespace norvane
