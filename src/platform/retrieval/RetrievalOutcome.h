#pragma once

#include "platform/retrieval/Response.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace norvane {

/// What a program that answers retrievals itself says of one, in place of a look at clocks.
struct MeasuredRetrieval {
    std::uint64_t milliseconds = 0;
    std::uint64_t age_seconds = 0; ///< of the response
};

/// How a retrieval ended.
struct RetrievalOutcome {
    DWORD error = ERROR_SUCCESS; ///< the last error, if there is no response
    ResponsePtr response = nullptr;
    std::string cause = {};  ///< of a failure, in the words of who knows it; may be empty
    bool confirmed = false;  ///< a server said that the cached response is still the right one
    bool remembered = false; ///< the failure is one of lately, and nobody was asked
    std::optional<MeasuredRetrieval> measured = std::nullopt;
};

/// The outcome for the exception that is being caught, which is a failure of this process.
[[nodiscard]] RetrievalOutcome outcome_of_thrown() noexcept;

/// The outcome of a retrieval, which may throw.
template <class Retrieve>
[[nodiscard]] RetrievalOutcome outcome_of(const Retrieve& retrieve) noexcept {
    try {
        return retrieve();
    } catch (...) {
        return outcome_of_thrown();
    }
}

} // namespace norvane
