#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>

namespace norvane {

/// When a piece of work is to be over, on a clock that nobody sets. Another thread may put it off.
class Deadline {
  public:
    using Clock = std::chrono::steady_clock;

    explicit Deadline(Clock::time_point end) noexcept : end_(end) {}

    void put_off_to(Clock::time_point end) noexcept {
        Clock::time_point present = end_.load();
        while (present < end && !end_.compare_exchange_weak(present, end)) {
        }
    }

    [[nodiscard]] bool has_passed() const noexcept { return Clock::now() >= end_.load(); }

    /// What is left, rounded up to milliseconds; 0 if it has passed.
    [[nodiscard]] std::chrono::milliseconds remaining() const noexcept {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_.load() - Clock::now());
        return std::max(left, std::chrono::milliseconds{0});
    }

  private:
    std::atomic<Clock::time_point> end_;
};

} // namespace norvane
