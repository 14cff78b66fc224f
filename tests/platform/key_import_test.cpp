#include "CryptoObjects.h"
#include "support/Key.h"

#include <vector>

namespace {

using namespace norvane::testing;

constexpr const char* rsa = "1.2.840.113549.1.1.1";
constexpr const char* dsa = "1.2.840.10040.4.1";
constexpr const char* ec = "1.2.840.10045.2.1";
constexpr const char* gost_94 = "1.2.643.2.2.20";
constexpr const char* gost_2001 = "1.2.643.2.2.19";
constexpr const char* gost_2012_256 = "1.2.643.7.1.1.1.1";
constexpr const char* gost_2012_512 = "1.2.643.7.1.1.1.2";

/// An odd number with this many bits, all of them set, as the content of an INTEGER.
Bytes ones(std::size_t bits) {
    Bytes content((bits + 7) / 8 + 1, 0xFF);
    content[0] = 0;
    content[1] = static_cast<std::uint8_t>(0xFF >> (8 - bits % 8) % 8);
    return content;
}

Bytes rsa_key(const Bytes& modulus, const Bytes& exponent = {0x01, 0x00, 0x01}) {
    return sequence(integer_octets(modulus), integer_octets(exponent));
}

Bytes dsa_parameters(const Bytes& g) {
    return sequence(integer_octets(ones(1024)), integer_octets(ones(160)), integer_octets(g));
}

Bytes with_changed_end(Bytes bytes) {
    bytes.back() ^= 1;
    return bytes;
}

/// The base point of a parameter set as a key: its y, and this x, in hexadecimal as they are
/// written.
Bytes gost_key(std::string_view x) {
    constexpr std::string_view y =
        "8D91E471E0989CDA27DF505A453F2B7635294F2DDF23E3B122ACC99C9E9F1E14";
    return octet_string(cat(reversed(hex(x)), reversed(hex(y))));
}
const Bytes base_point =
    gost_key("0000000000000000000000000000000000000000000000000000000000000001");
const Bytes base_point_with_x_plus_p =
    gost_key("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD98");

struct Row {
    const char* what;
    const char* algorithm;
    Bytes parameters;
    Bytes key;
    bool accepted = false;
};

std::vector<Row> rows() {
    const Bytes p256 = oid("1.2.840.10045.3.1.7");
    const Bytes spki = Key::ec(0).spki();
    const Bytes point(spki.end() - 65, spki.end());
    const Bytes compressed(point.begin() + 1, point.begin() + 33);
    const Bytes set_a = sequence(oid("1.2.643.2.2.35.1"));
    const Bytes set_94 = sequence(oid("1.2.643.2.2.32.2"));
    return {
        {"16384 bits", rsa, null(), rsa_key(ones(16384)), true},
        {"e of 64 bits", rsa, null(), rsa_key(ones(2048), ones(64)), true},
        {"1023 bits", rsa, null(), rsa_key(ones(1023))},
        {"16385 bits", rsa, null(), rsa_key(ones(16385))},
        {"e of 65 bits", rsa, null(), rsa_key(ones(2048), ones(65))},
        {"e = 1", rsa, null(), rsa_key(ones(2048), {1})},
        {"n even", rsa, null(), rsa_key(with_changed_end(ones(2048)))},
        {"bytes behind the key", rsa, null(), cat(rsa_key(ones(2048)), Bytes{0})},
        {"too long to be looked at", rsa, null(), Bytes(1 << 20, 0x30)},

        {"1024 and 160 bits", dsa, dsa_parameters({2}), integer(5), true},
        {"inherited parameters", dsa, {}, integer(5)},
        {"g = 1", dsa, dsa_parameters({1}), integer(5)},
        {"y = 0", dsa, dsa_parameters({2}), integer(0)},

        {"compressed", ec, p256,
         cat(Bytes{static_cast<std::uint8_t>(2 + point.back() % 2)}, compressed), true},
        {"point off the curve", ec, p256, with_changed_end(point)},
        {"point at infinity", ec, p256, {0}},
        {"implicit curve", ec, null(), point},

        {"2001 with the encryption set", gost_2001,
         sequence(oid("1.2.643.2.2.36.0"), oid("1.2.643.2.2.30.1"), oid("1.2.643.2.2.31.1")),
         base_point, true},
        {"point off the curve", gost_2001, set_a, with_changed_end(base_point)},
        {"coordinate beyond p", gost_2001, set_a, base_point_with_x_plus_p},
        {"set of the other length", gost_2012_512, set_a, base_point},
        {"no parameters", gost_2012_256, {}, base_point},
        {"94 with the weak set", gost_94, sequence(oid("1.2.643.2.2.32.0")),
         octet_string(Bytes(64, 1))},
        {"94 with y = 0", gost_94, set_94, octet_string(Bytes(128))},
    };
}

} // namespace

TEST(KeyImport, TakesWhatIsAKeyWithinTheLimitsAndNothingElse) {
    const OwnedProvider libcrypto = open_provider();
    const OwnedProvider gost = open_provider(PROV_NORVANE_GOST);
    for (const Row& row : rows()) {
        SCOPED_TRACE(std::string(row.algorithm) + ": " + row.what);
        const bool is_gost = std::string_view(row.algorithm).starts_with("1.2.643.");
        const KeyParts parts{row.algorithm, row.parameters, row.key};
        SetLastError(ERROR_SUCCESS);
        const OwnedKey key = parts.import_into(is_gost ? gost : libcrypto);
        EXPECT_EQ(key != 0, row.accepted);
        EXPECT_EQ(GetLastError(), row.accepted ? ERROR_SUCCESS : NTE_BAD_PUBLIC_KEY);
        const OwnedKey elsewhere = parts.import_into(is_gost ? libcrypto : gost);
        EXPECT_EQ(elsewhere, 0U);
        EXPECT_EQ(GetLastError(), NTE_BAD_ALGID);
    }
}
