#include <norvane/wincrypt.h>

#include <algorithm>
#include <gtest/gtest.h>

TEST(LocalMemory, IsZeroFilledOnRequest) {
    constexpr std::ptrdiff_t size = 4096;
    // The memory of the first block is likely to be given out again.
    auto* const dirty = static_cast<BYTE*>(LocalAlloc(LMEM_FIXED, size));
    std::fill_n(dirty, size, BYTE{0xAA});
    EXPECT_EQ(LocalFree(dirty), nullptr);
    auto* const block = static_cast<BYTE*>(LocalAlloc(LPTR, size));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::count(block, block + size, 0), size);
    EXPECT_EQ(LocalFree(block), nullptr);
}
