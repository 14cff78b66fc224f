#include "platform/ResidentLibrary.h"

#include "platform/ModulePath.h"

#include <cerrno>
#include <dlfcn.h>
#include <sys/stat.h>

namespace norvane {

bool is_library_present(const std::filesystem::path& library) noexcept {
    struct stat status {};
    return !library.empty() &&
           (stat(library.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR));
}

void* resident_function(const char* library, const char* function) {
    void* const loaded =
        dlopen(module_path(library).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    return loaded == nullptr ? nullptr : dlsym(loaded, function);
}

} // namespace norvane
