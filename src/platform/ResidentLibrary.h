#pragma once

namespace norvane {

/// The address of `function` in one of the platform's own libraries in folder "norvane", which is
/// loaded for it and never unloaded: its threads and objects may be in use until the process ends.
/// Null if the library cannot be loaded or has no such function. Throws std::bad_alloc and nothing
/// else.
[[nodiscard]] void* resident_function(const char* library, const char* function);

} // namespace norvane
