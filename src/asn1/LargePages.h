#pragma once

#include <cstddef>

namespace norvane {

/// Asks the system to back a block with large pages before it is first written to: filling 50 MB
/// page by page costs as much as hashing them. Does nothing for small blocks and where the system
/// has no large pages.
void prefer_large_pages(void* block, std::size_t size) noexcept;

} // namespace norvane
