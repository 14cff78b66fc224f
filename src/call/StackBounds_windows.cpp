#include "call/StackBounds.h"

#include <norvane/wincrypt.h>

namespace norvane {

std::optional<StackBounds> stack_bounds_of_this_thread() noexcept {
    ULONG_PTR lowest = 0;
    ULONG_PTR beyond = 0;
    GetCurrentThreadStackLimits(&lowest, &beyond);
    return StackBounds{lowest, beyond - lowest};
}

} // namespace norvane
