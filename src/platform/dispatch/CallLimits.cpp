#include "platform/dispatch/CallLimits.h"

#include "platform/dispatch/StackRoom.h"

#include <algorithm>

namespace norvane {
namespace {

struct ThreadCalls {
    std::uint32_t nesting = 0;
    Quotas left;
};

constinit thread_local ThreadCalls calls{};

} // namespace

DispatcherCall::DispatcherCall(const Quotas& quotas) noexcept {
    if (calls.nesting++ == 0) {
        calls.left = quotas;
    }
}

DispatcherCall::~DispatcherCall() { --calls.nesting; }

bool DispatcherCall::may_ask() const noexcept {
    return calls.nesting == 1 || (calls.left.any() && has_stack_room());
}

bool spend(Resource resource, std::uint64_t amount) noexcept {
    if (calls.nesting == 0) {
        return true;
    }
    std::uint64_t& left = calls.left[resource];
    if (left < amount) {
        calls.left = {};
        return false;
    }
    left -= amount;
    return true;
}

bool spend_verification() noexcept {
    return spend(Resource::verifications) && (calls.nesting == 0 || has_stack_room());
}

} // namespace norvane
