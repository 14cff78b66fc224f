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

/// Null if the library is missing or cannot be loaded. Throws std::bad_alloc and nothing else.
[[nodiscard]] const Transports* transports();

} // namespace norvane

/// The one visible function of that library.
extern "C" const norvane::Transports* norvane_transports() noexcept;
