#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>

namespace norvane {

/// A time of a file in nanoseconds since 1970.
[[nodiscard]] constexpr std::int64_t to_nanoseconds(const timespec& time) noexcept {
    constexpr std::int64_t per_second = 1'000'000'000;
    return std::int64_t{time.tv_sec} * per_second + time.tv_nsec;
}

/// Whether a change that is made now gets another time than the last one did. File systems keep
/// times in steps, which take from milliseconds to two seconds.
/// @param changed_ns the last change, as the file system has it.
[[nodiscard]] inline bool is_settled(std::int64_t changed_ns,
                                     std::chrono::system_clock::time_point now) noexcept {
    constexpr std::chrono::nanoseconds longest_step = std::chrono::seconds{2};
    const std::chrono::nanoseconds recent = now.time_since_epoch() - longest_step;
    return changed_ns < recent.count();
}

} // namespace norvane
