#include "asn1/LargePages.h"

#ifdef __linux__
#include <cstdint>
#include <sys/mman.h>
#endif

namespace norvane {

#ifdef __linux__

void prefer_large_pages(void* block, std::size_t size) noexcept {
    constexpr std::size_t smallest_block = 4 << 20;
    constexpr std::uintptr_t page_size = 4096;
    if (size < smallest_block) {
        return;
    }
    // The advice is for whole pages; those that the block shares with others are left alone.
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t offset = (page_size - address % page_size) % page_size;
    const std::size_t length = (size - offset) / page_size * page_size;
    madvise(static_cast<std::byte*>(block) + offset, length, MADV_HUGEPAGE);
}

#else

void prefer_large_pages(void* /*block*/, std::size_t /*size*/) noexcept {}

#endif

} // namespace norvane
