#pragma once

#include "platform/retrieval/Deadline.h"
#include "platform/retrieval/RetrievalOutcome.h"

#include <functional>
#include <string>

namespace norvane {

/// Carries `retrieve` out in a thread of its own, and waits for its outcome until `end`. Those who
/// come with the same key before it is over wait for the same outcome, each until its own end; the
/// deadline that `retrieve` is given is the latest of them. One that does not keep to it is left
/// alone: the next caller starts another. All that are not over count against a limit, and whoever
/// finds no room until its end has `ERROR_NO_SYSTEM_RESOURCES`. Throws std::bad_alloc.
[[nodiscard]] RetrievalOutcome
share_flight(const std::string& key, Deadline::Clock::time_point end,
             const std::function<RetrievalOutcome(const Deadline&)>& retrieve);

// Around a fork, in whose child nothing is on its way.
void prepare_flights_for_fork() noexcept;
void go_on_with_flights_in_parent() noexcept;
void begin_flights_in_child() noexcept;

} // namespace norvane
