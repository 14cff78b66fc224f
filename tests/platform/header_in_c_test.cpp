#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <string_view>

extern "C" LPCWSTR wide_literal_in_c(void);

TEST(HeaderInC, GivesTheSameFunctionsAndTheSameWideText) {
    EXPECT_EQ(std::u16string_view{wide_literal_in_c()},
              std::u16string_view{NORVANE_W("R\u00F6\U0001F600t")});
    EXPECT_EQ(GetLastError(), ERROR_TIMEOUT);
}
