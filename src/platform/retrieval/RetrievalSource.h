#pragma once

#include "platform/retrieval/RetrievalOutcome.h"
#include "platform/store/SignedData.h"

#include <optional>

namespace norvane {

/// What the program that answers the calling thread's retrievals says to one; nothing if there is
/// no such program. Throws std::bad_alloc.
[[nodiscard]] std::optional<RetrievalOutcome> answer_of_source(const char* url, ObjectKind kind,
                                                               DWORD flags, DWORD timeout_ms);

} // namespace norvane
