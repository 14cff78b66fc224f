#include "platform/ResidentLibrary.h"

#include "platform/ModulePath.h"

#include <dlfcn.h>

namespace norvane {

void* resident_function(const char* library, const char* function) {
    void* const loaded =
        dlopen(module_path(library).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    return loaded == nullptr ? nullptr : dlsym(loaded, function);
}

} // namespace norvane
