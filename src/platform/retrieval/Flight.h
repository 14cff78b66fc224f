#pragma once

#include "platform/retrieval/Deadline.h"
#include "platform/retrieval/RetrievalOutcome.h"

#include <functional>
#include <string>

namespace norvane {

/// Carries `retrieve` out in a thread of its own, and waits for its outcome until `end`. Those who
/// come with the same key before it is over wait for the same outcome, each until its own end; the
/// deadline that `retrieve` is given is the latest of them. One that does not keep to it is left
/// alone: the next caller starts another. Throws std::bad_alloc.
[[nodiscard]] RetrievalOutcome
share_flight(const std::string& key, Deadline::Clock::time_point end,
             const std::function<RetrievalOutcome(const Deadline&)>& retrieve);

} // namespace norvane
