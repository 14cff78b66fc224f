#include "header_in_c.h"

#include <gtest/gtest.h>
#include <string_view>

TEST(HeaderInC, GivesTheSameFunctionsAndTheSameWideText) {
    const BYTE encoded[] = {0x0A, 0x01, 0x05};
    EXPECT_EQ(decode_enumerated_in_c(encoded, sizeof encoded), 5);
    EXPECT_EQ(std::u16string_view{wide_literal_in_c()},
              std::u16string_view{NORVANE_W("R\u00F6\U0001F600t")});
}
