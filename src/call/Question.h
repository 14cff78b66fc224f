#pragma once

#include "asn1/ByteView.h"
#include "call/LeftBehind.h"
#include "call/Limits.h"
#include "values/ProcessFailure.h"

#include <norvane/wincrypt.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace norvane {

// A question about a certificate may ask others about the members of paths, on the same thread and
// through whatever modules the platform has. The outermost of them is what costs are counted for:
// the search for paths has no bound of its own, and over certificates with equal names and keys, or
// CAs that sign each other's CRLs, it would not end in a lifetime.
//
// Whatever is spent, or fails in the process, ends the outermost question and all inside it with no
// check. So less of each can only make checks impossible, never turn a certificate good.

/// A quota is spent, or there is no room left on the stack.
class QuotaSpent final : public CAException, public ProcessFailure {
  public:
    QuotaSpent(std::string_view message, std::uint32_t line)
        : CAException(message, source_module::chain_validator, line),
          ProcessFailure(ERROR_NOT_ENOUGH_QUOTA) {}
};

/// What the outermost question shares with those inside it.
struct SharedByQuestions {
    std::optional<Quotas> left; ///< Nothing until it is opened.
    std::uint32_t process_error = 0;
    LeftBehind left_behind;
};

/// A question about one certificate, from its beginning to its end. Questions of a thread nest, and
/// end in the reverse order of their beginning. When the outermost one ends, what they have left
/// behind is released, and the platform is told how the process failed, if it did.
class Question {
  public:
    /// @param certificate its DER, which outlives the question.
    explicit Question(ByteView certificate) noexcept;
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    ~Question();

    /// Whether a question about the same bytes is open further out. Each knows nothing of those
    /// outside it, so two CAs that sign each other's CRLs would ask for each other until the stack
    /// ends.
    [[nodiscard]] bool runs_in_a_circle() const noexcept;

    /// Makes ready for an answer. Throws PlatformFailure if the limits cannot be read, QuotaSpent
    /// if there is no room on the stack, and what require_health throws.
    void open();

    /// Throws PlatformFailure if the process has failed, in this question or in one inside it,
    /// whose answer was no check for that reason alone.
    void require_health() const;

    /// Notes how the process failed, for all questions that are open on the thread.
    void note_failure(std::uint32_t error) noexcept;

    /// The thread's innermost question; null if there is none.
    [[nodiscard]] static Question* current() noexcept;

    // What charge, retrieval_time_left and leave_behind mean for a question that is open.
    void charge(Resource resource, std::uint64_t amount);
    [[nodiscard]] LeftBehind& left_behind() noexcept { return shared_->left_behind; }
    [[nodiscard]] std::chrono::milliseconds retrieval_time_left() const noexcept;

  private:
    ByteView certificate_;
    Question* outer_;
    std::optional<SharedByQuestions> own_; ///< Of the outermost question.
    SharedByQuestions* shared_;
};

// Where costs arise. Outside of any question nothing is counted.

/// Takes an amount from what the outermost question has left. Throws QuotaSpent if that is less.
void charge(Resource resource, std::uint64_t amount = 1);

/// charge for one verification, which wants room on the stack, too: every step of a path verifies a
/// signature, and lies further down. Throws QuotaSpent.
void charge_verification();

/// What retrievals over the wire may yet take together.
[[nodiscard]] std::chrono::milliseconds retrieval_time_left() noexcept;

/// Question::require_health for the thread's questions.
void require_health();

/// Leaves a reference to a context or a store behind, which stays until the outermost question
/// ends. Outside of any question it is released at once. Throws std::bad_alloc, with the reference
/// released.
template <class Handle>
void leave_behind(Handle handle) {
    LeftBehind nobody;
    Question* const question = Question::current();
    (question == nullptr ? nobody : question->left_behind()).take(handle);
}

} // namespace norvane
