#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace norvane {

/// Where a thread's stack lies.
struct StackBounds {
    std::uintptr_t lowest;
    std::size_t size; ///< bytes
};

/// Those of the calling thread; nothing if the system does not tell.
[[nodiscard]] std::optional<StackBounds> stack_bounds_of_this_thread() noexcept;

} // namespace norvane
