#pragma once

#include "platform/failure.h"

#include <new>

namespace norvane {

/// Runs the body of a platform function and turns what it throws into a failure: `NTE_NO_MEMORY`,
/// or else `other`.
template <class Body>
[[nodiscard]] BOOL guarded(Body&& body, DWORD other = NTE_FAIL) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return fail(NTE_NO_MEMORY);
    } catch (...) {
        return fail(other);
    }
}

} // namespace norvane
