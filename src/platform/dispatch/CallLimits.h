#pragma once

#include <cstdint>

namespace norvane {

/// What one outermost call of the dispatcher on a thread may cost, with all the calls that modules
/// make from inside it. The search for paths has no bound of its own: over certificates with equal
/// names and keys it would not end in a lifetime. When the quota is spent verifications fail, so
/// no path grows any further and the search dies out.
///
/// Outside of the dispatcher nothing is bounded.

/// A nested call runs over the stack of those outside it, and CAs that sign each other's CRLs in a
/// ring nest as deep as the ring is long. An honest nesting is at most as deep as a path is long.
constexpr std::uint32_t max_nested_calls = 32;

/// A call of the dispatcher, from its beginning to its end, on one thread.
class DispatcherCall {
  public:
    /// @param verifications the quota, if this is the outermost call.
    explicit DispatcherCall(std::uint32_t verifications) noexcept;
    DispatcherCall(const DispatcherCall&) = delete;
    DispatcherCall& operator=(const DispatcherCall&) = delete;
    ~DispatcherCall();

    /// Whether modules may be asked: the call is not nested too deeply, nor is it a nested one that
    /// has nothing left of the quota.
    [[nodiscard]] bool may_ask() const noexcept;
};

/// Takes one verification from what the calling thread has left; false if that is none.
[[nodiscard]] bool spend_verification() noexcept;

} // namespace norvane
