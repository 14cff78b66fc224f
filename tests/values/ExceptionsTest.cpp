#include "values/Exceptions.h"

#include <string>

#include <gtest/gtest.h>
#include <norvane/wincrypt.h>

namespace norvane {
namespace {

// The Russian word for "error" in code page 1251.
const std::string error_word = "\xCE\xF8\xE8\xE1\xEA\xE0";

TEST(Exceptions, TextNamesMessageModuleLineAndCode) {
    const CAException error("x", source_module::chain_base, 7);
    EXPECT_STREQ(error.what(), "Exception :'x' at file:'ChainBase' line:7");
    EXPECT_EQ(CryptException(0xDEADBEEF, source_module::encode_and, 9).what(),
              "Exception :'" + error_word + " 0xdeadbeef.' at file:'EncodeAnd' line:9");
    // A description stands untrimmed behind the number.
    EXPECT_TRUE(format_error_code(ERROR_FILE_NOT_FOUND).starts_with(error_word + " 0x2: "));
    EXPECT_TRUE(format_error_code(ERROR_FILE_NOT_FOUND).ends_with("\r\n"));
}

} // namespace
} // namespace norvane
