#include "platform/dispatch/CallLimits.h"

namespace norvane {
namespace {

struct ThreadCalls {
    std::uint32_t nesting;
    std::uint32_t verifications_left;
};

constinit thread_local ThreadCalls calls{};

} // namespace

DispatcherCall::DispatcherCall(std::uint32_t verifications) noexcept {
    if (calls.nesting++ == 0) {
        calls.verifications_left = verifications;
    }
}

DispatcherCall::~DispatcherCall() { --calls.nesting; }

bool DispatcherCall::may_ask() const noexcept {
    return calls.nesting == 1 ||
           (calls.nesting <= max_nested_calls && calls.verifications_left > 0);
}

bool spend_verification() noexcept {
    if (calls.nesting == 0) {
        return true;
    }
    if (calls.verifications_left == 0) {
        return false;
    }
    --calls.verifications_left;
    return true;
}

} // namespace norvane
