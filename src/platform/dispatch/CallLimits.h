#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace norvane {

// What one outermost call of the dispatcher on a thread may cost, with all the calls that modules
// make from inside it. The search for paths has no bound of its own: over certificates with equal
// names and keys it would not end in a lifetime. When a quota is spent the platform's functions
// fail, so no path grows any further and the search dies out. Less of each can only make checks
// impossible, never turn a certificate good.
//
// Outside of the dispatcher nothing is bounded.

/// What is counted.
enum class Resource : std::uint8_t { verifications, hashed_bytes, shown_certificates };

/// Quotas by resource.
class Quotas {
  public:
    [[nodiscard]] std::uint64_t& operator[](Resource resource) noexcept {
        return amounts_[static_cast<std::size_t>(resource)];
    }
    [[nodiscard]] bool any() const noexcept { return *this != Quotas(); }
    bool operator==(const Quotas&) const = default;

  private:
    std::array<std::uint64_t, 3> amounts_{};
};

/// A call of the dispatcher, from its beginning to its end, on one thread.
class DispatcherCall {
  public:
    /// @param quotas what the call may cost, if it is the outermost.
    explicit DispatcherCall(const Quotas& quotas) noexcept;
    DispatcherCall(const DispatcherCall&) = delete;
    DispatcherCall& operator=(const DispatcherCall&) = delete;
    ~DispatcherCall();

    /// Whether modules may be asked: there is room on the stack, and if the call is a nested one
    /// something left of every quota.
    [[nodiscard]] bool may_ask() const noexcept;
};

/// Takes an amount from what the calling thread has left of a resource. False if there is less, and
/// then nothing is left of any, so that a search does not go on with what it knows already.
[[nodiscard]] bool spend(Resource resource, std::uint64_t amount = 1) noexcept;

/// spend for one verification, which is refused for want of room on the stack, too: every step of
/// a path verifies a signature, and lies further down.
[[nodiscard]] bool spend_verification() noexcept;

} // namespace norvane
