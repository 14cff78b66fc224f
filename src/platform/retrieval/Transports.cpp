#include "platform/retrieval/Transports.h"

#include "platform/ModulePath.h"

#include <dlfcn.h>

namespace norvane {
namespace {

const Transports* load_transports() {
    const std::string path = module_path("norvane_transports.so").string();
    // Its threads may be on their way when the process ends, so it is never unloaded.
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        return nullptr;
    }
    const auto entry =
        reinterpret_cast<decltype(&norvane_transports)>(dlsym(library, "norvane_transports"));
    return entry == nullptr ? nullptr : entry();
}

} // namespace

const Transports* transports() {
    static const Transports* const loaded = load_transports();
    return loaded;
}

} // namespace norvane
