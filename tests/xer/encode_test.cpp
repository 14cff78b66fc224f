#include "xer/Conversion.h"

using namespace norvane::testing;

TEST(EncodeKey, ComesBackForKeysOfAnySizeAndParametersOfAnyForm) {
    const Bytes cipher = hex("30 1b 06072a850302022002 06072a850302021e01 06072a850302021f01");
    for (const std::size_t size : {1U, 2U, 3U, 47U, 48U, 49U, 1000U}) { // a line has 48
        const Bytes blob = key_blob(cipher, Bytes(size, 0xa5));
        const Texts texts = encode(blob);
        ASSERT_TRUE(texts.done) << size;
        EXPECT_EQ(convert(*texts.key, *texts.parameters).bytes, blob) << size;
    }
    // Where the key begins is known from lengths of any form; what follows the key is left alone.
    const Bytes content(parameters.begin() + 2, parameters.end());
    for (const Bytes& form : {ber_indefinite(0x30, content), ber_long_length(0x30, content, 4)}) {
        const Texts texts = encode(cat(key_blob(form), hex("ff")));
        EXPECT_EQ(texts.key, key_text);
        EXPECT_EQ(texts.parameters, parameters_text);
    }
}

TEST(EncodeKey, FailsWithTheParametersLeftOnlyWhereTheyWereMade) {
    const Bytes set = oid("1.2.643.2.2.30.1");
    const Bytes blob = key_blob(parameters);
    const struct {
        const char* what;
        Bytes blob;
    } bad_parameters[] = {
        {"a header cut off", hex("06200100")},
        {"no parameters", key_blob({}, {}, 24)},
        {"cut off by an octet", Bytes(blob.begin(), blob.end() - 4)},
        {"an indefinite length without end", key_blob(hex("3080 0603550403 0603550403"), {}, 24)},
        {"four identifiers", key_blob(sequence(set, set, set, set))},
        {"null for the third", key_blob(sequence(set, set, null()))},
        {"an arc beyond 32 bits", key_blob(sequence(set, oid("1.2.4294967296")))},
    };
    for (const auto& [what, bytes] : bad_parameters) {
        const Texts texts = encode(bytes);
        EXPECT_FALSE(texts.done || texts.parameters) << what;
        EXPECT_EQ(texts.error, CRYPT_E_ASN1_ERROR) << what;
        EXPECT_EQ(texts.parameters_length, untouched) << what;
    }
    for (const std::size_t bits : {std::size_t{7}, std::size_t{32}, ~std::size_t{}}) {
        const Texts texts = encode(key_blob(parameters, text_bytes("ABC"), bits));
        EXPECT_FALSE(texts.done) << bits;
        EXPECT_EQ(texts.error, ERROR_BAD_ARGUMENTS) << bits;
        EXPECT_EQ(texts.key_length, static_cast<DWORD>(bits) / 8 * 3 + 70) << bits;
        EXPECT_EQ(texts.parameters, parameters_text) << bits;
    }
}
