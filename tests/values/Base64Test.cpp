#include "values/Base64.h"

#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>
#include <norvane/wincrypt.h>

namespace norvane {
namespace {

constexpr DWORD bad_encode = 0x80092002;
constexpr DWORD unset_error = 4711;

std::string repeated(std::size_t count, char character) { return std::string(count, character); }

std::uint32_t length_of(std::string_view text) { return static_cast<std::uint32_t>(text.size()); }

const std::uint8_t* bytes_of(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

std::string encode(std::string_view bytes) {
    std::uint32_t size = 0;
    EXPECT_TRUE(base64_encode(bytes_of(bytes), length_of(bytes), nullptr, &size));
    std::string text(size, '?');
    EXPECT_TRUE(base64_encode(bytes_of(bytes), length_of(bytes), text.data(), &size));
    return text;
}

// The error and the bytes.
using Decoded = std::pair<DWORD, std::string>;

Decoded decode(std::string_view text) {
    std::string bytes(1000, '?');
    std::uint32_t size = length_of(bytes);
    SetLastError(unset_error);
    const bool decoded = base64_decode(text.data(), length_of(text),
                                       reinterpret_cast<std::uint8_t*>(bytes.data()), &size);
    const DWORD error = GetLastError();
    EXPECT_EQ(decoded, error == 0);
    return {error, bytes.substr(0, size)};
}

TEST(Base64Encode, EndsEveryLineWithALineFeedAndTellsSizesUpToTheLargest) {
    for (const auto& [bytes, text] : {std::pair(std::string(), std::string()),
                                      {"foobar\xFF\xFE\xFB", "Zm9vYmFy//77\n"},
                                      {repeated(48, '\0'), repeated(64, 'A') + "\n"},
                                      {repeated(49, '\0'), repeated(64, 'A') + "\nAA==\n"}}) {
        EXPECT_EQ(encode(bytes), text);
    }
    std::uint32_t size = 4;
    std::string text = "????";
    EXPECT_FALSE(base64_encode(bytes_of("f"), 1, text.data(), &size));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(size, 5U);
    EXPECT_EQ(text, "????");

    SetLastError(unset_error);
    EXPECT_TRUE(base64_encode(nullptr, 3171668112, nullptr, &size));
    EXPECT_EQ(GetLastError(), 0U);
    EXPECT_EQ(size, 4294967235);
    EXPECT_FALSE(base64_encode(nullptr, 3171668112 + 48, nullptr, &size));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_ARGUMENTS});
}

TEST(Base64Decode, ReadsAndRefuses) {
    const struct {
        const char* about;
        std::string text;
        Decoded expected;
    } cases[] = {
        {"white space anywhere", " Z m\t9\r\nv\n", {0, "foo"}},
        {"top bits", "\xD1Q\xBD\xBD", {0, "A"}},
        {"pads inside a run", "QQ==QUJD", {0, std::string("A\0\0A", 4)}},
        {"more pads than bytes", "====", {bad_encode, ""}},
        {"an invalid character", "Zm9v!m9v", {bad_encode, ""}},
        {"invalid characters in an incomplete run", "!!!", {0, ""}},
        {"a full run and an incomplete one", repeated(64, 'A') + "\nZg", {0, repeated(48, '\0')}},
        {"an incomplete run before a dash", "Zm9vZg-", {bad_encode, ""}},
        {"pads come off later runs too", "QQ==-QUJD", {0, "AA"}},
        {"an empty run takes a byte off later ones", "-Zm9v-YmFy", {0, "foba"}},
        {"80 in a line", repeated(80, 'A'), {bad_encode, ""}},
        {"76 and as many blanks", repeated(76, ' ') + repeated(76, 'A'), {0, repeated(57, '\0')}},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(decode(test.text), test.expected) << test.about;
    }
}

} // namespace
} // namespace norvane
