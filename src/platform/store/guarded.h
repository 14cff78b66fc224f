#pragma once

#include "platform/SystemFailure.h"
#include "platform/failure.h"

#include <new>
#include <type_traits>

namespace norvane {

/// The last errors that stand for what is thrown.
struct ThrownCodes {
    DWORD no_memory = ERROR_NOT_ENOUGH_MEMORY;
    DWORD other = E_UNEXPECTED;
};
/// Those of functions of providers.
inline constexpr ThrownCodes provider_codes{.no_memory = NTE_NO_MEMORY, .other = NTE_FAIL};

/// The code of the exception that is being caught: its own if it is a SystemFailure.
[[nodiscard]] inline DWORD code_of_thrown(ThrownCodes codes = {}) noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return codes.no_memory;
    } catch (const SystemFailure& failure) {
        return failure.last_error();
    } catch (...) {
        return codes.other;
    }
}

/// Runs the body of a platform function, which no exception may leave. `work` gives the result of
/// the function, or ends with `fail`. Throwing means that there is no memory, or for anything but
/// that, a fault of the machine or of a library, such as a lock that cannot be taken.
template <class Work>
[[nodiscard]] std::invoke_result_t<Work> guarded(ThrownCodes codes, Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return fail<std::invoke_result_t<Work>>(code_of_thrown(codes));
    }
}
template <class Work>
[[nodiscard]] std::invoke_result_t<Work> guarded(Work work) noexcept {
    return guarded(ThrownCodes{}, work);
}

} // namespace norvane
