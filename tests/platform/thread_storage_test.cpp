#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <thread>

TEST(ThreadStorage, KeepsOneValueAndOneLastErrorPerThreadAndStartsAnewWithAnIndexUsedAgain) {
    const DWORD index = TlsAlloc();
    int here = 0;
    ASSERT_TRUE(TlsSetValue(index, &here));
    SetLastError(ERROR_TIMEOUT);
    std::thread{[&] {
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        EXPECT_EQ(TlsGetValue(index), nullptr);
        EXPECT_TRUE(TlsSetValue(index, nullptr));
    }}.join();
    EXPECT_EQ(GetLastError(), ERROR_TIMEOUT);
    EXPECT_EQ(TlsGetValue(index), &here);
    ASSERT_TRUE(TlsFree(index));
    EXPECT_FALSE(TlsFree(index));
    ASSERT_EQ(TlsAlloc(), index);
    EXPECT_EQ(TlsGetValue(index), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS) << "null is a value, not a failure";
    EXPECT_TRUE(TlsFree(index));
}
