#pragma once

#include "platform/retrieval/Fetch.h"

namespace norvane {

/// What speaks to servers: a library of its own in folder "norvane", with all that it needs, which
/// is loaded with the first request over the wire and stays. A process that asks no server has
/// nothing of it.
struct Transports {
    FetchOutcome (*http)(const FetchRequest& request);
    FetchOutcome (*ldap)(const FetchRequest& request);
};

/// Null if the library is missing. Throws std::bad_alloc, and SystemFailure if it is there and
/// cannot be loaded.
[[nodiscard]] const Transports* transports();

// Around a fork.
void prepare_transports_for_fork() noexcept;
void go_on_with_transports_after_fork() noexcept;

} // namespace norvane

/// The one visible function of that library.
extern "C" const norvane::Transports* norvane_transports() noexcept;
