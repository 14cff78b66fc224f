#include <norvane/wincrypt.h>

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

constexpr DWORD both_encodings = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
constexpr int untouched = 77;

using Bytes = std::vector<BYTE>;

struct Outcome {
    DWORD error;
    int value;

    bool operator==(const Outcome&) const = default;
};

Outcome decode(const Bytes& encoded) {
    int value = untouched;
    DWORD size = sizeof value;
    const BOOL done = CryptDecodeObject(both_encodings, X509_ENUMERATED, encoded.data(),
                                        static_cast<DWORD>(encoded.size()), 0, &value, &size);
    return {done ? ERROR_SUCCESS : GetLastError(), value};
}

} // namespace

TEST(DecodeObject, ReadsEnumeratedInEveryDefiniteLengthForm) {
    const struct {
        Bytes encoded;
        int value;
    } cases[] = {
        {{0x0A, 0x01, 0x00}, 0},
        {{0x0A, 0x01, 0x7F}, 127},
        {{0x0A, 0x01, 0x80}, -128},
        {{0x0A, 0x02, 0x00, 0x80}, 128},
        {{0x0A, 0x04, 0x7F, 0xFF, 0xFF, 0xFF}, std::numeric_limits<int>::max()},
        {{0x0A, 0x04, 0x80, 0x00, 0x00, 0x00}, std::numeric_limits<int>::min()},
        {{0x0A, 0x81, 0x01, 0x05}, 5},
        {{0x0A, 0x89, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0x05}, 5}, // more octets than a size_t
    };
    for (const auto& item : cases) {
        EXPECT_EQ(decode(item.encoded), (Outcome{ERROR_SUCCESS, item.value}));
    }
}

TEST(DecodeObject, TellsWhatIsWrongWithTheBytes) {
    const struct {
        Bytes encoded;
        DWORD error;
    } cases[] = {
        {{}, CRYPT_E_ASN1_EOD},
        {{0x0A}, CRYPT_E_ASN1_EOD},
        {{0x0A, 0x01}, CRYPT_E_ASN1_EOD},
        {{0x0A, 0x82, 0x01}, CRYPT_E_ASN1_EOD},
        {{0x0A, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}, CRYPT_E_ASN1_EOD},
        {{0x0A, 0x89, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0x05}, CRYPT_E_ASN1_EOD}, // 2^64 + 1
        {{0x02, 0x01, 0x00}, CRYPT_E_ASN1_BADTAG},                         // INTEGER
        {{0x2A, 0x01, 0x00}, CRYPT_E_ASN1_BADTAG},                         // constructed
        {{0x0A, 0x00}, CRYPT_E_ASN1_CORRUPT},
        {{0x0A, 0x80, 0x00, 0x00}, CRYPT_E_ASN1_CORRUPT}, // indefinite
        {{0x0A, 0xFF, 0x00}, CRYPT_E_ASN1_CORRUPT},       // reserved
        {{0x0A, 0x05, 0x00, 0x00, 0x00, 0x00, 0x01}, CRYPT_E_ASN1_LARGE},
        {{0x0A, 0x01, 0x00, 0x00}, CRYPT_E_ASN1_NOEOD},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(decode(item.encoded), (Outcome{item.error, untouched}))
            << testing::PrintToString(item.encoded);
    }
}

TEST(DecodeObject, FollowsTheProtocolOfSizes) {
    const BYTE encoded[] = {0x0A, 0x01, 0x02};
    DWORD size = 0;
    EXPECT_TRUE(CryptDecodeObject(X509_ASN_ENCODING, X509_ENUMERATED, encoded, sizeof encoded, 0,
                                  nullptr, &size));
    EXPECT_EQ(size, sizeof(int));

    int value = untouched;
    size = sizeof value - 1;
    EXPECT_FALSE(CryptDecodeObject(X509_ASN_ENCODING, X509_ENUMERATED, encoded, sizeof encoded, 0,
                                   &value, &size));
    EXPECT_EQ(GetLastError(), ERROR_MORE_DATA);
    EXPECT_EQ(size, sizeof value);
    EXPECT_EQ(value, untouched);
}

TEST(DecodeObject, RefusesUnknownTypesEncodingsAndFlags) {
    constexpr DWORD alloc_flag = 0x8000;
    const BYTE encoded[] = {0x0A, 0x01, 0x02};
    const struct {
        DWORD encoding;
        LPCSTR type;
        DWORD flags;
        DWORD error;
    } cases[] = {
        {both_encodings, X509_ENUMERATED, CRYPT_DECODE_NOCOPY_FLAG, ERROR_SUCCESS},
        {PKCS_7_ASN_ENCODING, X509_ENUMERATED, 0, ERROR_SUCCESS},
        {both_encodings, nullptr, 0, ERROR_FILE_NOT_FOUND},
        {both_encodings, NORVANE_STRUCTURE_TYPE(9999), 0, ERROR_FILE_NOT_FOUND},
        {both_encodings, "1.2.3.4", 0, ERROR_FILE_NOT_FOUND},
        {0, X509_ENUMERATED, 0, ERROR_FILE_NOT_FOUND},
        {both_encodings, X509_ENUMERATED, alloc_flag, E_INVALIDARG},
    };
    for (const auto& item : cases) {
        int value = 0;
        DWORD size = sizeof value;
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(CryptDecodeObject(item.encoding, item.type, encoded, sizeof encoded, item.flags,
                                    &value, &size),
                  item.error == ERROR_SUCCESS);
        EXPECT_EQ(GetLastError(), item.error);
    }
}
