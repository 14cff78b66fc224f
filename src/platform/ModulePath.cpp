#include "platform/ModulePath.h"

#include "platform/LazyObject.h"
#include "platform/SystemFailure.h"

#include <dlfcn.h>
#include <system_error>

namespace norvane {
namespace {

constexpr const char* module_folder = "norvane";

/// The folder of the library that holds this code, symbolic links resolved; empty if unknown.
std::filesystem::path library_folder() {
    static const int inside_this_library = 0;
    Dl_info info{};
    if (dladdr(&inside_this_library, &info) == 0) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path library = std::filesystem::canonical(info.dli_fname, error);
    if (error && error != std::errc::no_such_file_or_directory) {
        // Not a place that is unknown for good, which whoever has one remembers.
        throw_system_failure(error.value(), error.message());
    }
    return library.parent_path();
}

constinit LazyObject<const std::filesystem::path> folder_of_this_library;

} // namespace

std::filesystem::path module_path(const std::filesystem::path& name) {
    if (name.empty() || name.is_absolute()) {
        return name;
    }
    const std::filesystem::path& folder = folder_of_this_library.get(
        [] { return std::make_unique<const std::filesystem::path>(library_folder()); });
    return folder.empty() ? folder : folder / module_folder / name;
}

} // namespace norvane
