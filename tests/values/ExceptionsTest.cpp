#include "values/Exceptions.h"

#include <array>
#include <string>

#include <gtest/gtest.h>
#include <norvane/wincrypt.h>

namespace norvane {
namespace {

// The Russian word for "error" in code page 1251.
const std::string error_word = "\xCE\xF8\xE8\xE1\xEA\xE0";

TEST(Exceptions, TextNamesMessageModuleAndLine) {
    const CAException error("x", source_module::chain_base, 7);
    EXPECT_STREQ(error.what(), "Exception :'x' at file:'ChainBase' line:7");
    EXPECT_EQ(error.file(), "ChainBase");
    EXPECT_EQ(error.line(), 7U);
}

TEST(Exceptions, CodeWithoutDescriptionGivesTheNumberAlone) {
    const CryptException error(0xDEADBEEF, source_module::encode_and, 9);
    EXPECT_EQ(error.what(),
              "Exception :'" + error_word + " 0xdeadbeef.' at file:'EncodeAnd' line:9");
    EXPECT_EQ(error.code(), 0xDEADBEEFU);
}

TEST(Exceptions, DescriptionStandsUntrimmedBehindTheNumber) {
    std::array<char, 400> description{};
    ASSERT_NE(FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                             ERROR_FILE_NOT_FOUND, 0, description.data(),
                             static_cast<DWORD>(description.size()), nullptr),
              0U);
    EXPECT_EQ(format_error_code(ERROR_FILE_NOT_FOUND), error_word + " 0x2: " + description.data());
}

TEST(Exceptions, HandlersTakeTheWholeFamilyBelowTheirClass) {
    EXPECT_THROW(throw Asn1DecodeException("m", "f", 1), Asn1Exception);
    EXPECT_THROW(throw date_exception("m", "f", 1), CAException);
}

} // namespace
} // namespace norvane
