#pragma once

#include <cstdint>

namespace norvane {

/// Tells the platform how the process failed in the thread's last outermost question, 0 for not at
/// all: the answer to it can only say that no check was possible. Where the platform has no place
/// for that nothing is told.
void report_process_error(std::uint32_t error) noexcept;

} // namespace norvane
