#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

constexpr DWORD system_text = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;

std::string describe(DWORD code) {
    char buffer[512] = {};
    const DWORD length =
        FormatMessageA(system_text, nullptr, code, 0, buffer, sizeof buffer, nullptr);
    EXPECT_EQ(length, std::char_traits<char>::length(buffer));
    return buffer;
}

} // namespace

TEST(ErrorText, DescribesKnownCodesWithALineEnd) {
    EXPECT_EQ(describe(CRYPT_E_REVOKED), "The certificate is revoked.\r\n");
    EXPECT_EQ(describe(ERROR_SUCCESS), "The operation succeeded.\r\n"); // first of the table
    EXPECT_EQ(describe(CRYPT_E_ASN1_NOEOD), "ASN.1: more data follows the value.\r\n"); // last
    EXPECT_EQ(describe(E_INVALIDARG), "A parameter is not valid.\r\n"); // a system error within
}

TEST(ErrorText, FailsForUnknownCodes) {
    for (const DWORD code : {1U, 0x80092FFFU, 0x8007FFFFU, 0xFFFFFFFFU}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(describe(code), "");
        EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
    }
}

TEST(ErrorText, NeedsRoomForTheTerminatorToo) {
    const auto length = static_cast<DWORD>(describe(CRYPT_E_REVOKED).size());
    std::string buffer(length + 1, '?');
    EXPECT_EQ(FormatMessageA(system_text, nullptr, CRYPT_E_REVOKED, 0, buffer.data(), length + 1,
                             nullptr),
              length);
    EXPECT_EQ(buffer.back(), '\0');

    buffer.assign(length + 1, '?');
    EXPECT_EQ(
        FormatMessageA(system_text, nullptr, CRYPT_E_REVOKED, 0, buffer.data(), length, nullptr),
        0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(buffer, std::string(length + 1, '?'));
}

TEST(ErrorText, RefusesOtherSourcesAndForms) {
    constexpr DWORD allocate_buffer = 0x100;
    char buffer[512];
    for (const DWORD flags :
         {0U, FORMAT_MESSAGE_IGNORE_INSERTS, system_text | allocate_buffer, system_text | 0xFF}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(FormatMessageA(flags, nullptr, ERROR_SUCCESS, 0, buffer, sizeof buffer, nullptr),
                  0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
}

TEST(LastError, BelongsToTheThread) {
    SetLastError(CRYPT_E_REVOKED);
    DWORD at_start = CRYPT_E_REVOKED;
    std::thread{[&] {
        at_start = GetLastError();
        SetLastError(ERROR_TIMEOUT);
    }}.join();
    EXPECT_EQ(at_start, ERROR_SUCCESS);
    EXPECT_EQ(GetLastError(), CRYPT_E_REVOKED);
}
