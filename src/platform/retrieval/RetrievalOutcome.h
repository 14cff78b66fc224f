#pragma once

#include "platform/retrieval/Response.h"

#include <functional>
#include <memory>

namespace norvane {

using ResponsePtr = std::shared_ptr<const Response>;

/// How a retrieval ended.
struct RetrievalOutcome {
    DWORD error = ERROR_SUCCESS; ///< the last error, if there is no response
    ResponsePtr response;
};

/// The outcome of a retrieval, which may throw: then it is a failure of this process.
[[nodiscard]] RetrievalOutcome
outcome_of(const std::function<RetrievalOutcome()>& retrieve) noexcept;

} // namespace norvane
