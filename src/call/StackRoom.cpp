#include "call/StackRoom.h"

#include "call/StackBounds.h"

#include <algorithm>

namespace norvane {
namespace {

// Paths and nested questions take up to 6 KiB for each CA, and TLS with a look-up of a name some
// dozens.
constexpr std::size_t room_wanted = std::size_t{256} * 1024;
/// Threads with a small stack keep this part of it free instead.
constexpr std::size_t part_wanted = 4;

/// The part of a thread's stack in which there is no more room. Stacks grow downwards.
struct NoRoom {
    std::uintptr_t begin;
    std::uintptr_t end; ///< 0: not looked at yet
};

NoRoom no_room_of_this_thread() noexcept {
    const auto bounds = stack_bounds_of_this_thread();
    if (!bounds) {
        return {1, 1};
    }
    return {bounds->lowest, bounds->lowest + std::min(room_wanted, bounds->size / part_wanted)};
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
