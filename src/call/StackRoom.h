#pragma once

namespace norvane {

/// Whether the calling thread's stack has room for a step further down: for a verification, a
/// retrieval or a nested question, and the way back. Always true where the bounds of the stack are
/// not known, and on stacks that a program has made itself.
[[nodiscard]] bool has_stack_room() noexcept;

} // namespace norvane
