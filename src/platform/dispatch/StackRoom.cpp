#include "platform/dispatch/StackRoom.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace norvane {
namespace {

// Paths and nested checks take up to 2 KiB for each CA, and TLS with a name look-up some dozens.
constexpr std::size_t room_wanted = std::size_t{256} * 1024;
/// Threads with a small stack keep this part of it free instead.
constexpr std::size_t part_wanted = 4;

/// The part of a thread's stack in which there is no more room. Stacks grow downwards.
struct NoRoom {
    std::uintptr_t begin;
    std::uintptr_t end;
};

NoRoom no_room_of_this_thread() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return {1, 1};
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    const bool known = pthread_attr_getstack(&attributes, &lowest, &size) == 0;
    pthread_attr_destroy(&attributes);
    if (!known) {
        return {1, 1};
    }
    const auto begin = reinterpret_cast<std::uintptr_t>(lowest);
    return {begin, begin + std::min(room_wanted, size / part_wanted)};
}

constinit thread_local NoRoom no_room{0, 0};

} // namespace

bool has_stack_room() noexcept {
    if (no_room.end == 0) {
        no_room = no_room_of_this_thread();
    }
    // Not the address of a variable, which sanitizers may put elsewhere.
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    return here < no_room.begin || here >= no_room.end;
}

} // namespace norvane
