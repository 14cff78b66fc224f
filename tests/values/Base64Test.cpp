#include "values/Base64.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

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
    if (!base64_encode(bytes_of(bytes), length_of(bytes), nullptr, &size)) {
        return "refused";
    }
    std::string text(size, '?');
    const bool encoded = base64_encode(bytes_of(bytes), length_of(bytes), text.data(), &size);
    EXPECT_TRUE(encoded && size == text.size());
    return text;
}

struct Decoded {
    DWORD error;
    std::string bytes;

    bool operator==(const Decoded&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Decoded& decoded) {
        return out << decoded.error << " " << testing::PrintToString(decoded.bytes);
    }
};

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

TEST(Base64Encode, EndsEveryLineWithALineFeed) {
    EXPECT_EQ(encode(""), "");
    EXPECT_EQ(encode("f"), "Zg==\n");
    EXPECT_EQ(encode("fo"), "Zm8=\n");
    EXPECT_EQ(encode("foo"), "Zm9v\n");
    EXPECT_EQ(encode("foobar\xFF\xFE\xFB"), "Zm9vYmFy//77\n");
    EXPECT_EQ(encode(repeated(48, '\0')), repeated(64, 'A') + "\n");
    EXPECT_EQ(encode(repeated(49, '\0')), repeated(64, 'A') + "\nAA==\n");
}

TEST(Base64Encode, KeepsTheContractOfSizeCalls) {
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
    EXPECT_FALSE(base64_encode(bytes_of("f"), 1, text.data(), nullptr));
    EXPECT_FALSE(base64_encode(nullptr, 1, text.data(), &size));
}

TEST(Base64Decode, ReadsAndRefuses) {
    const struct {
        const char* about;
        std::string text;
        Decoded expected;
    } cases[] = {
        {"no text", "", {0, ""}},
        {"white space anywhere", " Z m\t9\r\nv\n", {0, "foo"}},
        {"one pad", "Zm8=", {0, "fo"}},
        {"two pads and a line end", "QQ==\r\n", {0, "A"}},
        {"top bits", "\xD1Q\xBD\xBD", {0, "A"}},
        {"pads inside a run", "QQ==QUJD", {0, std::string("A\0\0A", 4)}},
        {"as many pads as bytes", "A===", {0, ""}},
        {"more pads than bytes", "====", {bad_encode, ""}},
        {"an invalid character", "Zm9v!m9v", {bad_encode, ""}},
        {"an incomplete group with a pad", "QQ=\n", {bad_encode, ""}},
        {"an incomplete run without a pad", "Zm9vZg", {0, ""}},
        {"invalid characters in an incomplete run", "!!!", {0, ""}},
        {"a full run and an incomplete one", repeated(64, 'A') + "\nZg", {0, repeated(48, '\0')}},
        {"an incomplete run before a dash", "Zm9vZg-", {bad_encode, ""}},
        {"runs between dashes", "Zm9v-YmFy-", {0, "foobar"}},
        {"pads come off later runs too", "QQ==-QUJD", {0, "AA"}},
        {"an empty run takes a byte off later ones", "-Zm9v-YmFy", {0, "foba"}},
        {"two empty runs take one byte off", "--Zm9v", {0, "fo"}},
        {"an incomplete run behind an empty one", "-Zm9", {bad_encode, ""}},
        {"lines of 76", repeated(76, 'A') + "\n" + repeated(76, 'A'), {0, repeated(114, '\0')}},
        {"79 in a line", repeated(79, 'A') + "\nA", {0, repeated(60, '\0')}},
        {"80 in a line", repeated(80, 'A'), {bad_encode, ""}},
        {"80 and a line feed", repeated(80, 'A') + "\n", {bad_encode, ""}},
        {"80 around a carriage return",
         repeated(40, 'A') + "\r" + repeated(40, 'A'),
         {bad_encode, ""}},
        {"76 and as many blanks", repeated(76, ' ') + repeated(76, 'A'), {0, repeated(57, '\0')}},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(decode(test.text), test.expected) << test.about;
    }
}

TEST(Base64Decode, CountsOnWhenTheRoomIsUsedUp) {
    const std::string text = repeated(64, 'A') + "\nZm9vYg==";
    const std::string bytes = repeated(48, '\0') + "foob";
    for (std::size_t room = 0; room <= bytes.size(); ++room) {
        std::vector<std::uint8_t> output(room);
        auto size = static_cast<std::uint32_t>(room);
        const bool fits = base64_decode(text.data(), length_of(text), output.data(), &size);
        // A vector without bytes has no address: the call then only asks for the size.
        const bool enough = room == bytes.size() || room == 0;
        EXPECT_EQ(fits, enough) << room;
        EXPECT_EQ(GetLastError(), enough ? DWORD{0} : DWORD{ERROR_MORE_DATA}) << room;
        EXPECT_EQ(size, bytes.size()) << room;
        EXPECT_TRUE(std::equal(output.begin(), output.end(), bytes_of(bytes))) << room;
    }
}

TEST(Base64Decode, RefusesNullTextAndNullSize) {
    std::uint32_t size = 1;
    EXPECT_FALSE(base64_decode(nullptr, 0, nullptr, &size));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_ARGUMENTS});
    EXPECT_FALSE(base64_decode("", 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_ARGUMENTS});
}

} // namespace
} // namespace norvane
