// Every allocation fails once; that nothing leaks then the address sanitizer sees.
#include "platform/FailingNew.h"
#include "xer/Conversion.h"

using namespace norvane::testing;

namespace {

/// Calls an export, with one allocation more allowed each time until it succeeds, and checks how it
/// fails before. It gets places for two blocks, of which the first is there on success only.
/// Returns how often the second was there on failure; -1 if the export failed at most twice.
template <class Export>
int second_blocks_left(Export call) {
    int left = 0;
    for (long allowed = 0; allowed < 1000; ++allowed) {
        BYTE *first = nullptr, *second = nullptr;
        set_allocations_left(allowed);
        const bool done = call(first, second) != FALSE;
        set_allocations_left(-1);
        EXPECT_EQ(first != nullptr, done);
        EXPECT_TRUE(done || GetLastError() == ERROR_NOT_ENOUGH_MEMORY);
        left += !done && second != nullptr ? 1 : 0;
        LocalFree(first);
        LocalFree(second);
        if (done) {
            return allowed > 2 ? left : -1;
        }
    }
    return -1;
}

} // namespace

TEST(Allocations, FailWithTheCodeForNoMemoryAndNoResultButParameters) {
    DWORD size = 0, other_size = 0;
    const Bytes blob = key_blob(parameters);
    EXPECT_GT(second_blocks_left([&](BYTE*& first, BYTE*& second) {
                  return NorvaneXEREncodePublicKeyAndParameters(
                      0, nullptr, blob.data(), static_cast<DWORD>(blob.size()), 0, nullptr, &first,
                      &size, &second, &other_size);
              }),
              0);
    std::string key = key_text, text = parameters_text, oid = key_oid;
    CERT_PUBLIC_KEY_INFO info{
        {oid.data(), {static_cast<DWORD>(text.size()), reinterpret_cast<BYTE*>(text.data())}},
        {static_cast<DWORD>(key.size()), reinterpret_cast<BYTE*>(key.data()), 0}};
    EXPECT_EQ(second_blocks_left([&](BYTE*& first, BYTE*& /*second*/) {
                  return NorvaneXERConvertPublicKeyInfo(0, &info, 0, 0, &first, &size);
              }),
              0);
}
