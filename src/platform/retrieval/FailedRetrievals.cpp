#include "platform/retrieval/FailedRetrievals.h"

#include "platform/NeverDestroyed.h"
#include "platform/SystemFailure.h"

#include <algorithm>

namespace norvane {
namespace {

/// With the longest URLs they take 8 MB.
constexpr std::size_t max_failures = 1024;

} // namespace

FailedRetrievals& FailedRetrievals::instance() noexcept {
    static NeverDestroyed<FailedRetrievals> failures;
    return failures.object;
}

std::optional<DWORD> FailedRetrievals::find(const std::string& key,
                                            std::chrono::milliseconds offered,
                                            Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    const auto known = by_key_.find(key);
    if (known == by_key_.end() || known->second.end <= now) {
        return std::nullopt;
    }
    const Failure& failure = known->second;
    const bool holds = failure.error != ERROR_TIMEOUT || offered <= failure.offered;
    return holds ? std::optional(failure.error) : std::nullopt;
}

void FailedRetrievals::remember(const std::string& key, DWORD error,
                                std::chrono::milliseconds offered, Clock::time_point now,
                                std::chrono::milliseconds time) {
    if (is_own_failure(error) || time.count() == 0) {
        return;
    }
    const std::lock_guard lock(mutex_);
    if (by_key_.size() >= max_failures && !by_key_.contains(key)) {
        make_room(now);
    }
    by_key_[key] = {.error = error, .offered = offered, .end = now + time};
}

void FailedRetrievals::forget(const std::string& key) {
    const std::lock_guard lock(mutex_);
    by_key_.erase(key);
}

/// Lets go of what is over, or else of what is over first.
void FailedRetrievals::make_room(Clock::time_point now) {
    std::erase_if(by_key_, [now](const auto& item) { return item.second.end <= now; });
    if (by_key_.size() >= max_failures) {
        by_key_.erase(std::ranges::min_element(by_key_, {},
                                               [](const auto& item) { return item.second.end; }));
    }
}

} // namespace norvane
