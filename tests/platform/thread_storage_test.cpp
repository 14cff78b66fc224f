#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <thread>
#include <vector>

TEST(ThreadStorage, KeepsOneValuePerThreadAndIndex) {
    const DWORD index = TlsAlloc();
    const DWORD other = TlsAlloc();
    ASSERT_NE(index, TLS_OUT_OF_INDEXES);
    ASSERT_NE(other, TLS_OUT_OF_INDEXES);
    int here = 0;
    int there = 0;
    ASSERT_TRUE(TlsSetValue(index, &here));
    LPVOID at_start = &here;
    std::thread{[&] {
        at_start = TlsGetValue(index);
        EXPECT_TRUE(TlsSetValue(index, &there));
    }}.join();
    EXPECT_EQ(at_start, nullptr);
    EXPECT_EQ(TlsGetValue(index), &here);

    SetLastError(ERROR_TIMEOUT);
    EXPECT_EQ(TlsGetValue(other), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS) << "null is a value, not a failure";
    EXPECT_TRUE(TlsFree(index));
    EXPECT_TRUE(TlsFree(other));
}

TEST(ThreadStorage, StartsAnewWhenAnIndexIsUsedAgain) {
    const DWORD index = TlsAlloc();
    int value = 0;
    ASSERT_TRUE(TlsSetValue(index, &value));
    ASSERT_TRUE(TlsFree(index));
    const DWORD again = TlsAlloc();
    ASSERT_EQ(again, index);
    EXPECT_EQ(TlsGetValue(again), nullptr);
    EXPECT_TRUE(TlsFree(again));
}

TEST(ThreadStorage, RefusesIndexesThatAreNotReserved) {
    const DWORD freed = TlsAlloc();
    ASSERT_TRUE(TlsFree(freed));
    for (const DWORD index : {freed, TLS_OUT_OF_INDEXES}) {
        EXPECT_FALSE(TlsFree(index));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_FALSE(TlsSetValue(index, nullptr));
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(TlsGetValue(index), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
}

TEST(ThreadStorage, TellsWhenNoIndexIsLeft) {
    std::vector<DWORD> indexes;
    DWORD index = TlsAlloc();
    for (; index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        indexes.push_back(index);
    }
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_ITEMS);
    EXPECT_GE(indexes.size(), 64U);
    for (const DWORD reserved : indexes) {
        EXPECT_TRUE(TlsFree(reserved));
    }
}
