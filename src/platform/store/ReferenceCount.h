#pragma once

#include <atomic>
#include <cstdint>

namespace norvane {

/// A count of references that any thread may change. It has 64 bits since references that are never
/// given back may add up for as long as a process runs.
class ReferenceCount {
  public:
    explicit ReferenceCount(std::uint64_t count) : count_(count) {}

    /// For somebody who holds a reference.
    void add() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }

    /// For somebody who does not. False if the last reference is gone.
    [[nodiscard]] bool add_if_alive() noexcept {
        std::uint64_t count = count_.load(std::memory_order_relaxed);
        while (count != 0) {
            if (count_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

    /// Takes one back. True if it was the last one.
    [[nodiscard]] bool remove() noexcept {
        return count_.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }

    /// Takes one back unless there is none.
    [[nodiscard]] bool remove_if_alive() noexcept {
        std::uint64_t count = count_.load(std::memory_order_relaxed);
        while (count != 0) {
            if (count_.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel)) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] std::uint64_t value() const noexcept {
        return count_.load(std::memory_order_acquire);
    }

  private:
    std::atomic<std::uint64_t> count_;
};

} // namespace norvane
