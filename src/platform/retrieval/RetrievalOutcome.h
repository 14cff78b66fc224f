#pragma once

#include "platform/retrieval/Response.h"

#include <functional>
#include <memory>
#include <string>

namespace norvane {

/// How a retrieval ended.
struct RetrievalOutcome {
    DWORD error = ERROR_SUCCESS; ///< the last error, if there is no response
    ResponsePtr response = nullptr;
    std::string cause = {};  ///< of a failure, in the words of who knows it; may be empty
    bool confirmed = false;  ///< a server said that the cached response is still the right one
    bool remembered = false; ///< the failure is one of lately, and nobody was asked
};

/// The outcome of a retrieval, which may throw: then it is a failure of this process.
[[nodiscard]] RetrievalOutcome
outcome_of(const std::function<RetrievalOutcome()>& retrieve) noexcept;

} // namespace norvane
