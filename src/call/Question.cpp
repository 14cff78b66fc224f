#include "call/Question.h"

#include "call/FailureReport.h"
#include "call/StackRoom.h"
#include "record/Record.h"

namespace norvane {
namespace {

constinit thread_local Question* innermost = nullptr;

void require_stack_room() {
    if (!has_stack_room()) {
        note(event::quota_spent, record_value("quota", std::string_view("stack")));
        throw QuotaSpent("no room on the stack", __LINE__);
    }
}

} // namespace

Question::Question(ByteView certificate) noexcept
    : certificate_(certificate), outer_(innermost),
      shared_(outer_ == nullptr ? &own_.emplace() : outer_->shared_) {
    innermost = this;
}

Question::~Question() {
    innermost = outer_;
    if (own_) {
        report_process_error(own_->process_error);
    }
}

bool Question::runs_in_a_circle() const noexcept {
    for (const Question* question = outer_; question != nullptr; question = question->outer_) {
        if (question->certificate_ == certificate_) {
            return true;
        }
    }
    return false;
}

void Question::open() {
    require_health();
    if (!shared_->left) {
        shared_->left = configured_quotas();
    } else {
        require_stack_room();
    }
}

void Question::require_health() const {
    require_no_process_error(shared_->process_error, source_module::chain_validator, __LINE__);
}

void Question::note_failure(std::uint32_t error) noexcept {
    if (shared_->process_error == 0) {
        shared_->process_error = error;
    }
}

Question* Question::current() noexcept { return innermost; }

void Question::charge(Resource resource, std::uint64_t amount) {
    std::uint64_t& left = (*shared_->left)[resource];
    if (left < amount) {
        note(event::quota_spent, record_value("quota", name_of(resource)));
        throw QuotaSpent("quota is spent", __LINE__);
    }
    left -= amount;
}

std::chrono::milliseconds Question::retrieval_time_left() const noexcept {
    return std::chrono::milliseconds((*shared_->left)[Resource::retrieval_time]);
}

void charge(Resource resource, std::uint64_t amount) {
    if (Question* const question = Question::current()) {
        question->charge(resource, amount);
    }
}

void charge_verification() {
    if (Question::current() != nullptr) {
        charge(Resource::verifications);
        require_stack_room();
    }
}

std::chrono::milliseconds retrieval_time_left() noexcept {
    const Question* const question = Question::current();
    return question == nullptr ? std::chrono::milliseconds::max() : question->retrieval_time_left();
}

void require_health() {
    if (const Question* const question = Question::current()) {
        question->require_health();
    }
}

} // namespace norvane
