// Every allocation fails once; that nothing leaks then the address sanitizer sees.
#include "xer/Conversion.h"

using namespace norvane::testing;

TEST(Allocations, FailWithTheCodeForNoMemoryAndNoResult) {
    const auto expect_failures_until_all_succeed = [](const auto& attempt) {
        constexpr long enough = 1000;
        long allowed = 0;
        for (auto result = attempt(allowed); !result.done && allowed < enough;
             result = attempt(++allowed)) {
            EXPECT_EQ(result.error, ERROR_NOT_ENOUGH_MEMORY);
        }
        EXPECT_TRUE(allowed > 2 && allowed < enough);
    };
    const Bytes blob = key_blob(parameters);
    expect_failures_until_all_succeed([&](long allowed) { return encode(blob, allowed); });
    expect_failures_until_all_succeed(
        [](long allowed) { return convert(key_text, parameters_text, key_oid, allowed); });
}
