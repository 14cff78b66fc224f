#pragma once

#include "platform/retrieval/Deadline.h"

#include <norvane/wincrypt.h>

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace norvane {

/// How retrievals from servers have failed lately in this process, so that a dead host costs its
/// time-out once and not once for each certificate. Failures of the process itself are not
/// remembered. Keys are those of `retrieval_key`, so that the kinds of objects are apart.
class FailedRetrievals {
  public:
    using Clock = Deadline::Clock;

    [[nodiscard]] static FailedRetrievals& instance() noexcept;

    /// The last error with which a retrieval would fail again; nothing if it must be tried. That
    /// time ran out is an answer only for whoever offers no more of it.
    [[nodiscard]] std::optional<DWORD>
    find(const std::string& key, std::chrono::milliseconds offered, Clock::time_point now);

    /// Remembers a failure for a time; 0 remembers nothing. Throws std::bad_alloc.
    void remember(const std::string& key, DWORD error, std::chrono::milliseconds offered,
                  Clock::time_point now, std::chrono::milliseconds time);

    void forget(const std::string& key);

    void prepare_fork() noexcept { mutex_.lock(); }
    void go_on_after_fork() noexcept { mutex_.unlock(); }

  private:
    struct Failure {
        DWORD error = ERROR_SUCCESS;
        std::chrono::milliseconds offered{};
        Clock::time_point end; ///< of the memory
    };

    void make_room(Clock::time_point now);

    std::mutex mutex_;
    std::unordered_map<std::string, Failure> by_key_;
};

} // namespace norvane
