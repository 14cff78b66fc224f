#include "values/ASN1Blob.h"

#include <cstring>
#include <initializer_list>
#include <new>
#include <utility>

#include <gtest/gtest.h>

#include "values/ErrorOf.h"

namespace {

bool allocations_fail = false;

} // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocations_fail ? nullptr : ::operator new[](size);
}

namespace norvane {
namespace {

CACMPT_BLOB blob_of(std::initializer_list<std::uint8_t> bytes) {
    return {bytes.begin(), static_cast<std::uint32_t>(bytes.size())};
}

TEST(Blob, OrdersByLengthFirstAndUnsignedBytesSecond) {
    const CACMPT_BLOB ascending[] = {
        {}, blob_of({2}), blob_of({0xFF}), blob_of({1, 0}), blob_of({1, 0x80}), blob_of({0, 0, 0})};
    for (const CACMPT_BLOB& a : ascending) {
        for (const CACMPT_BLOB& b : ascending) {
            EXPECT_EQ(blob_less(a, b), &a < &b) << &a - ascending << " " << &b - ascending;
            EXPECT_EQ(a == b, &a == &b) << &a - ascending << " " << &b - ascending;
        }
    }
}

TEST(Blob, CopiesAreDeepAndMovesEmptyTheSource) {
    CACMPT_BLOB source = blob_of({1, 2, 3});
    CACMPT_BLOB copy = source;
    copy.data[0] = 9;
    EXPECT_EQ(source, blob_of({1, 2, 3}));
    copy = std::as_const(copy); // to itself
    EXPECT_EQ(copy, blob_of({9, 2, 3}));

    const std::uint8_t* const bytes = source.data;
    copy = std::move(source);
    EXPECT_EQ(copy.data, bytes);
    EXPECT_EQ(source, CACMPT_BLOB()); // NOLINT(bugprone-use-after-move): it is told.
    EXPECT_EQ(source.data, nullptr);
}

TEST(Blob, ResizeKeepsTheValidBytesAndOnlyAFailedAssignLosesThem) {
    CACMPT_BLOB blob = blob_of({1, 2, 3, 4});
    const std::uint8_t* const bytes = blob.data;
    blob.resize(2);
    EXPECT_EQ(blob.data, bytes) << "it shrinks in place";
    blob.resize(4);
    ASSERT_EQ(blob.length, 4U);
    EXPECT_EQ(std::memcmp(blob.data, "\1\2", 2), 0);
    blob.resize(2);

    allocations_fail = true;
    const Error resizing = error_of([&] { blob.resize(3); });
    const bool unchanged = blob.length == 2 && std::memcmp(blob.data, "\1\2", 2) == 0;
    const std::uint8_t byte = 7;
    const Error assigning = error_of([&] { blob.assign(&byte, 1); });
    allocations_fail = false;
    EXPECT_EQ(resizing.message, "out of memory");
    EXPECT_TRUE(unchanged);
    EXPECT_EQ(assigning.message, "out of memory");
    EXPECT_EQ(blob.length, 0U);
    EXPECT_EQ(blob.data, nullptr);
}

} // namespace
} // namespace norvane
