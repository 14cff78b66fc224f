#include "platform/retrieval/Transports.h"

#include "platform/Descriptor.h"
#include "platform/ModulePath.h"
#include "platform/ResidentLibrary.h"
#include "platform/SystemFailure.h"

#include <cerrno>
#include <fcntl.h>
#include <mutex>

namespace norvane {
namespace {

constexpr const char* library = "norvane_transports.so";

std::mutex transports_mutex; ///< Held while the library is loaded, and else for a moment.
const Transports* loaded = nullptr;

/// For a library that cannot be loaded: returns if there is none.
void require_absence() {
    const Descriptor file(open(module_path(library).c_str(), O_RDONLY | O_CLOEXEC));
    const int error = errno;
    if (file.number() >= 0 || (error != ENOENT && error != ENOTDIR)) {
        const DWORD own = file.number() >= 0 ? ERROR_SUCCESS : own_failure_of(error);
        throw SystemFailure(own == ERROR_SUCCESS ? ERROR_INTERNAL_ERROR : own,
                            "norvane_transports.so cannot be loaded");
    }
}

} // namespace

const Transports* transports() {
    const std::lock_guard lock(transports_mutex);
    if (loaded == nullptr) {
        const auto entry = reinterpret_cast<decltype(&norvane_transports)>(
            resident_function(library, "norvane_transports"));
        if (entry == nullptr) {
            require_absence();
            return nullptr;
        }
        loaded = entry();
    }
    return loaded;
}

void prepare_transports_for_fork() noexcept { transports_mutex.lock(); }
void go_on_with_transports_after_fork() noexcept { transports_mutex.unlock(); }

} // namespace norvane
