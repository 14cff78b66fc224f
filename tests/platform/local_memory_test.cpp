#include <norvane/wincrypt.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

TEST(LocalMemory, IsZeroFilledOnRequest) {
    constexpr SIZE_T size = 4096;
    HLOCAL dirty = LocalAlloc(LMEM_FIXED, size); // its memory is likely to be given out again
    ASSERT_NE(dirty, nullptr);
    std::memset(dirty, 0xAA, size);
    EXPECT_EQ(LocalFree(dirty), nullptr);

    HLOCAL block = LocalAlloc(LPTR, size);
    ASSERT_NE(block, nullptr);
    const auto* bytes = static_cast<const BYTE*>(block);
    EXPECT_EQ(std::count(bytes, bytes + size, 0), static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(LocalFree(block), nullptr);
}

TEST(LocalMemory, GivesABlockForNoBytesAndRefusesMovableOnes) {
    constexpr UINT movable = 0x2;
    HLOCAL block = LocalAlloc(LPTR, 0);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(LocalFree(block), nullptr);
    EXPECT_EQ(LocalAlloc(movable, 8), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}
