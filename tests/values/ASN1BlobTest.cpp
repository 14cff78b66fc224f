#include "values/ASN1Blob.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "PlainError.h"

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

template <class Operation>
std::string error_without_memory(Operation operation) {
    allocations_fail = true;
    std::string text = plain_error_of(operation);
    allocations_fail = false;
    return text;
}

constexpr const char* out_of_memory = "Exception :'out of memory' at file:'ASN1Blob'";

TEST(Blob, OrdersByLengthFirstAndUnsignedBytesSecond) {
    const std::vector<CACMPT_BLOB> ascending{{},
                                             blob_of({0x02}),
                                             blob_of({0xFF}),
                                             blob_of({0x01, 0x00}),
                                             blob_of({0x01, 0x80}),
                                             blob_of({0x00, 0x00, 0x00})};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(blob_less(ascending[i], ascending[j]), i < j) << i << " " << j;
            EXPECT_EQ(ascending[i] == ascending[j], i == j) << i << " " << j;
        }
    }
}

TEST(Blob, CopiesAreDeepAndMovesEmptyTheSource) {
    CACMPT_BLOB source = blob_of({1, 2, 3});
    CACMPT_BLOB copy = source;
    copy.data[0] = 9;
    EXPECT_EQ(source, blob_of({1, 2, 3}));
    copy = std::as_const(copy);
    EXPECT_EQ(copy, blob_of({9, 2, 3}));

    const std::uint8_t* const bytes = source.data;
    copy = std::move(source);
    const CACMPT_BLOB moved = std::move(copy);
    EXPECT_EQ(moved.data, bytes);
    // NOLINTBEGIN(bugprone-use-after-move): what a move leaves behind is told.
    EXPECT_EQ(source.length, 0U);
    EXPECT_EQ(source.data, nullptr);
    EXPECT_EQ(copy.length, 0U);
    EXPECT_EQ(copy.data, nullptr);
    // NOLINTEND(bugprone-use-after-move)
}

TEST(Blob, AssignOfNothingFreesTheBytes) {
    CACMPT_BLOB blob = blob_of({1, 2});
    blob.assign(blob_of({7}).data, 0);
    EXPECT_EQ(blob.length, 0U);
    EXPECT_EQ(blob.data, nullptr);
}

TEST(Blob, ResizeShrinksInPlaceAndGrowsFromTheValidBytes) {
    CACMPT_BLOB blob = blob_of({1, 2, 3, 4});
    const std::uint8_t* const bytes = blob.data;
    blob.resize(2);
    EXPECT_EQ(blob.length, 2U);
    EXPECT_EQ(blob.data, bytes);
    EXPECT_EQ(bytes[3], 4);
    blob.resize(4);
    ASSERT_EQ(blob.length, 4U);
    EXPECT_EQ(std::memcmp(blob.data, "\1\2", 2), 0);

    CACMPT_BLOB empty;
    empty.resize(3);
    std::fill_n(empty.data, 3, std::uint8_t{5});
    EXPECT_EQ(empty, blob_of({5, 5, 5}));
}

TEST(Blob, FailedAssignLeavesItEmptyAndFailedResizeUnchanged) {
    const std::array<std::uint8_t, 8> bytes{};
    CACMPT_BLOB blob = blob_of({1, 2});
    EXPECT_EQ(error_without_memory([&] { blob.resize(3); }), out_of_memory);
    EXPECT_EQ(blob, blob_of({1, 2}));
    EXPECT_EQ(error_without_memory([&] { blob.assign(bytes.data(), 1); }), out_of_memory);
    EXPECT_EQ(blob.length, 0U);
    EXPECT_EQ(blob.data, nullptr);
    EXPECT_EQ(error_without_memory([&] { CACMPT_BLOB(bytes.data(), 8); }), out_of_memory);
}

} // namespace
} // namespace norvane
