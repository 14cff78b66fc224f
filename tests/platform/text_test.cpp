#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace {

using namespace std::string_view_literals;

/// The text in UTF-16, its size first asked for and then given exactly; empty on failure.
std::u16string widen(UINT code_page, std::string_view text, DWORD flags = 0) {
    const auto length = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(code_page, flags, text.data(), length, nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(needed), u'?');
    EXPECT_EQ(MultiByteToWideChar(code_page, flags, text.data(), length, wide.data(), needed),
              needed);
    return wide;
}

} // namespace

TEST(Text, ConvertsLatin1AndUtf8OfEveryLengthAtItsBounds) {
    EXPECT_EQ(widen(CP_ACP, "A\0\x7F\x80\x9F\xE9\xFF"sv), u"A\0\u007F\u0080\u009F\u00E9\u00FF"sv);
    EXPECT_EQ(widen(CP_UTF8,
                    "\0\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
                    "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"sv,
                    MB_ERR_INVALID_CHARS),
              u"\0\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF"sv);
    WCHAR wide[3] = {u'?', u'?', u'?'};
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "o\U0001F600", -1, wide, 2), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(wide[1], u'?') << "no half of a pair";
}

TEST(Text, ReplacesOrRefusesIllFormedUtf8) {
    const std::pair<std::string_view, std::u16string_view> cases[] = {
        {"\xC0\x80", u"\uFFFD\uFFFD"},                            // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},                  // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},        // above U+10FFFF
        {"\xF1\x80\x80\xC2\x62\xE2\x82", u"\uFFFD\uFFFDb\uFFFD"}, // cut
    };
    for (const auto& [text, wide] : cases) {
        EXPECT_EQ(widen(CP_UTF8, text), wide);
        EXPECT_EQ(widen(CP_UTF8, text, MB_ERR_INVALID_CHARS), u"");
        EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    }
}

TEST(ErrorText, NeedsRoomForTheTerminatorTooAndFailsForUnknownCodes) {
    const auto format = [](DWORD code, std::string& buffer, std::size_t size) {
        return FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                              code, 0, buffer.data(), static_cast<DWORD>(size), nullptr);
    };
    const std::string text = "The certificate is revoked.\r\n";
    std::string buffer(text.size() + 1, '?');
    EXPECT_EQ(format(CRYPT_E_REVOKED, buffer, text.size()), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(format(CRYPT_E_REVOKED, buffer, buffer.size()), text.size());
    EXPECT_EQ(buffer, text + '\0');
    EXPECT_EQ(format(0x80092FFFU, buffer, buffer.size()), 0);
    EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
}
