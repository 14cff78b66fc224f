#pragma once

#include "platform/failure.h"

#include <new>
#include <type_traits>

namespace norvane {

/// Runs the body of a platform function, which no exception may leave. `work` gives the result of
/// the function, or ends with `fail`. Throwing means that there is no memory, or for anything but
/// that, a fault of the machine, such as a lock that cannot be taken.
template <class Work>
[[nodiscard]] std::invoke_result_t<Work> guarded(Work work) noexcept {
    using Result = std::invoke_result_t<Work>;
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return fail<Result>(ERROR_NOT_ENOUGH_MEMORY);
    } catch (...) {
        return fail<Result>(E_UNEXPECTED);
    }
}

} // namespace norvane
