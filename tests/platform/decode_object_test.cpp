#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

constexpr int untouched = 77;

using Bytes = std::vector<BYTE>;
using Outcome = std::pair<DWORD, int>;

Outcome decode(const Bytes& encoded, DWORD size = sizeof(int)) {
    int value = untouched;
    const BOOL done = CryptDecodeObject(X509_ASN_ENCODING, X509_ENUMERATED, encoded.data(),
                                        static_cast<DWORD>(encoded.size()), 0, &value, &size);
    EXPECT_EQ(size, sizeof value);
    return {done ? ERROR_SUCCESS : GetLastError(), value};
}

} // namespace

TEST(DecodeObject, ReadsEnumeratedOrTellsWhatIsWrongWithTheBytes) {
    const std::pair<Bytes, Outcome> cases[] = {
        {{0x0A, 0x02, 0x00, 0x80}, {ERROR_SUCCESS, 128}},
        {{0x0A, 0x04, 0x80, 0, 0, 0}, {ERROR_SUCCESS, std::numeric_limits<int>::min()}},
        {{0x0A, 0x89, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0x05}, {ERROR_SUCCESS, 5}}, // beyond a size_t
        {{0x0A, 0x89, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0x05}, {CRYPT_E_ASN1_EOD, untouched}}, // 2^64 + 1
        {{0x2A, 0x01, 0x00}, {CRYPT_E_ASN1_BADTAG, untouched}}, // constructed
        {{0x0A, 0x00}, {CRYPT_E_ASN1_CORRUPT, untouched}},
        {{0x0A, 0x80, 0x00, 0x00}, {CRYPT_E_ASN1_CORRUPT, untouched}}, // indefinite
        {{0x0A, 0x05, 0, 0, 0, 0, 1}, {CRYPT_E_ASN1_LARGE, untouched}},
        {{0x0A, 0x01, 0x00, 0x00}, {CRYPT_E_ASN1_NOEOD, untouched}},
    };
    for (const auto& [encoded, outcome] : cases) {
        EXPECT_EQ(decode(encoded), outcome) << testing::PrintToString(encoded);
    }
    EXPECT_EQ(decode({0x0A, 0x01, 0x02}, sizeof(int) - 1), (Outcome{ERROR_MORE_DATA, untouched}));
}
