#include "call/StackBounds.h"

#include <pthread.h>

namespace norvane {

std::optional<StackBounds> stack_bounds_of_this_thread() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return std::nullopt;
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    const bool known = pthread_attr_getstack(&attributes, &lowest, &size) == 0;
    pthread_attr_destroy(&attributes);
    if (!known) {
        return std::nullopt;
    }
    return StackBounds{reinterpret_cast<std::uintptr_t>(lowest), size};
}

} // namespace norvane
