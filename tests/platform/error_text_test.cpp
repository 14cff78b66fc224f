#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <string>

TEST(ErrorText, NeedsRoomForTheTerminatorTooAndFailsForUnknownCodes) {
    const auto format = [](DWORD code, std::string& buffer, std::size_t size) {
        return FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                              code, 0, buffer.data(), static_cast<DWORD>(size), nullptr);
    };
    const std::string text = "The certificate is revoked.\r\n";
    std::string buffer(text.size() + 1, '?');
    EXPECT_EQ(format(CRYPT_E_REVOKED, buffer, text.size()), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(buffer, std::string(text.size() + 1, '?'));
    EXPECT_EQ(format(CRYPT_E_REVOKED, buffer, buffer.size()), text.size());
    EXPECT_EQ(buffer, text + '\0');
    EXPECT_EQ(format(0x80092FFFU, buffer, buffer.size()), 0);
    EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
}
