#pragma once

#include <filesystem>

namespace norvane {

/// Whether there is a file at this path, loadable or not.
[[nodiscard]] bool is_library_present(const std::filesystem::path& library) noexcept;

/// The address of `function` in one of the platform's own libraries in folder "norvane", which is
/// loaded for it and never unloaded: its threads and objects may be in use until the process ends.
/// Null if the library cannot be loaded or has no such function. Throws what `module_path` throws.
[[nodiscard]] void* resident_function(const char* library, const char* function);

} // namespace norvane
