#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

/// The text in UTF-16, its size first asked for and then given exactly; nothing on failure.
std::optional<std::u16string> widen(UINT code_page, std::string_view text, DWORD flags = 0) {
    const auto length = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(code_page, flags, text.data(), length, nullptr, 0);
    if (needed == 0) {
        return std::nullopt;
    }
    std::u16string wide(static_cast<std::size_t>(needed) + 1, u'?');
    if (needed > 1) {
        EXPECT_EQ(
            MultiByteToWideChar(code_page, flags, text.data(), length, wide.data(), needed - 1), 0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(*(wide.end() - 2), u'?') << "no half of a pair either";
    }
    EXPECT_EQ(MultiByteToWideChar(code_page, flags, text.data(), length, wide.data(), needed),
              needed);
    EXPECT_EQ(wide.back(), u'?') << "no unit behind the size";
    wide.pop_back();
    return wide;
}

} // namespace

TEST(Text, TakesEveryByteOfTheDefaultCodePageAsLatin1) {
    EXPECT_EQ(widen(CP_ACP, "A\0\x7F\x80\x9F\xE9\xFF"sv, MB_PRECOMPOSED | MB_ERR_INVALID_CHARS),
              u"A\0\u007F\u0080\u009F\u00E9\u00FF"sv);
}

TEST(Text, ConvertsUtf8OfEveryLengthAtItsBounds) {
    EXPECT_EQ(widen(CP_UTF8,
                    "\0\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
                    "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"sv,
                    MB_ERR_INVALID_CHARS),
              u"\0\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF"sv);
}

TEST(Text, ReplacesOrRefusesIllFormedUtf8) {
    const struct {
        std::string_view text;
        std::u16string_view wide;
    } cases[] = {
        {"\x80", u"\uFFFD"},
        {"\xC0\x80", u"\uFFFD\uFFFD"}, // overlong
        {"\xC3", u"\uFFFD"},
        {"\xC3(", u"\uFFFD("}, // what breaks a sequence is a character of its own
        {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
        {"\xE2\x82\xAC"sv.substr(0, 2), u"\uFFFD"}, // cut: one for what could have become one
        {"\xE2\x82\xE2\x82\xAC", u"\uFFFD\u20AC"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"}, // a surrogate
        {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x9F\x98", u"\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // above U+10FFFF
        {"\xF5\xFF", u"\uFFFD\uFFFD"},
        {"a\xF1\x80\x80\xE1\x80\xC2"
         "b\x80",
         u"a\uFFFD\uFFFD\uFFFDb\uFFFD"},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(widen(CP_UTF8, item.text), item.wide);
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(widen(CP_UTF8, item.text, MB_ERR_INVALID_CHARS), std::nullopt);
        EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    }
}

TEST(Text, CountsTheTerminatorWithLengthMinusOne) {
    WCHAR wide[8];
    ASSERT_EQ(MultiByteToWideChar(CP_ACP, 0, "Root", -1, wide, 8), 5);
    EXPECT_EQ(std::u16string_view(wide, 5), u"Root\0"sv);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "", -1, wide, 1), 1);
}

TEST(Text, RefusesBadArguments) {
    WCHAR wide[8];
    char narrow[8] = "text";
    auto* same = reinterpret_cast<WCHAR*>(narrow);
    const struct {
        UINT code_page;
        DWORD flags;
        LPCSTR text;
        int length;
        WCHAR* buffer;
        int size;
        DWORD error;
    } cases[] = {
        {1252, 0, "a", 1, wide, 8, ERROR_INVALID_PARAMETER},
        {CP_ACP, 0, nullptr, -1, wide, 8, ERROR_INVALID_PARAMETER},
        {CP_ACP, 0, "a", 0, wide, 8, ERROR_INVALID_PARAMETER},
        {CP_ACP, 0, "a", -2, wide, 8, ERROR_INVALID_PARAMETER},
        {CP_ACP, 0, "a", 1, nullptr, 8, ERROR_INVALID_PARAMETER},
        {CP_ACP, 0, "a", 1, wide, -1, ERROR_INVALID_PARAMETER},
        {CP_ACP, 0, narrow, 4, same, 4, ERROR_INVALID_PARAMETER},
        {CP_ACP, 0x2, "a", 1, wide, 8, ERROR_INVALID_FLAGS},
        {CP_UTF8, MB_PRECOMPOSED, "a", 1, wide, 8, ERROR_INVALID_FLAGS},
    };
    for (const auto& item : cases) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(MultiByteToWideChar(item.code_page, item.flags, item.text, item.length,
                                      item.buffer, item.size),
                  0);
        EXPECT_EQ(GetLastError(), item.error);
    }
}
