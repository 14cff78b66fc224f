#pragma once

#include "platform/retrieval/RetrievalOutcome.h"
#include "platform/store/SignedData.h"
#include "record/Record.h"

#include <chrono>

namespace norvane {

/// A retrieval as a branch of the record of the decision that asks for it.
class ToldRetrieval {
  public:
    /// @param url must outlive this object.
    ToldRetrieval(const char* url, ObjectKind kind, DWORD flags, DWORD timeout_ms) noexcept;

    /// Tells how it ended: what it brought, or by what it failed. Throws std::bad_alloc.
    void end(const RetrievalOutcome& outcome, ObjectKind kind);

  private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] MeasuredRetrieval measure(const RetrievalOutcome& outcome) const;

    bool cache_only_;
    Clock::time_point start_ = Clock::now();
    Branch branch_;
};

} // namespace norvane
