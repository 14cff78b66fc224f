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

const Bytes e_65537 = hex("010001");

/// An odd number with this many bits, all of them set, as the content of an INTEGER.
Bytes ones(std::size_t bits) {
    Bytes content((bits + 7) / 8 + 1, 0xFF);
    content[0] = 0;
    content[1] = static_cast<std::uint8_t>(0xFF >> (8 - bits % 8) % 8);
    return content;
}

Bytes even(Bytes content) {
    content.back() ^= 1;
    return content;
}

Bytes rsa_key(const Bytes& modulus, const Bytes& exponent = e_65537) {
    return sequence(integer_octets(modulus), integer_octets(exponent));
}

Bytes dsa_parameters(const Bytes& p, const Bytes& q, const Bytes& g = {0x02}) {
    return sequence(integer_octets(p), integer_octets(q), integer_octets(g));
}

/// The point of a fresh key on P-256, uncompressed.
Bytes p256_point() {
    const Bytes spki = Key::ec(0).spki();
    return {spki.end() - 65, spki.end()};
}

Bytes with_changed_end(Bytes bytes) {
    bytes.back() ^= 1;
    return bytes;
}

Bytes joined(const Bytes& first, const Bytes& second) { return cat(first, second); }

/// The base point of a parameter set as a key: x and y in hexadecimal, as they are written.
Bytes gost_key(std::string_view x, std::string_view y) {
    return octet_string(cat(reversed(hex(x)), reversed(hex(y))));
}

const Bytes point_a = gost_key("0000000000000000000000000000000000000000000000000000000000000001",
                               "8D91E471E0989CDA27DF505A453F2B7635294F2DDF23E3B122ACC99C9E9F1E14");
// The same point with x plus p.
const Bytes point_a_beyond =
    gost_key("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFD98",
             "8D91E471E0989CDA27DF505A453F2B7635294F2DDF23E3B122ACC99C9E9F1E14");

Bytes gost_parameters(std::string_view set, std::string_view digest = {}) {
    return sequence(oid(set), digest.empty() ? Bytes{} : oid(digest));
}

struct Row {
    const char* what;
    const char* algorithm;
    Bytes parameters;
    Bytes key;
    bool accepted = false;
};

std::vector<Row> rows() {
    const Bytes p256 = oid("1.2.840.10045.3.1.7");
    const Bytes point = p256_point();
    const Bytes compressed(point.begin() + 1, point.begin() + 33);
    const Bytes hash_set = oid("1.2.643.2.2.30.1");
    return {
        {"1024 bits", rsa, null(), rsa_key(ones(1024)), true},
        {"no parameters", rsa, {}, rsa_key(ones(2048)), true},
        {"16384 bits", rsa, null(), rsa_key(ones(16384)), true},
        {"e of 64 bits", rsa, null(), rsa_key(ones(2048), ones(64)), true},
        {"e = 3", rsa, null(), rsa_key(ones(2048), {3}), true},
        {"lengths of BER", rsa, null(), to_indefinite(rsa_key(ones(2048))), true},
        {"1023 bits", rsa, null(), rsa_key(ones(1023))},
        {"16385 bits", rsa, null(), rsa_key(ones(16385))},
        {"e of 65 bits", rsa, null(), rsa_key(ones(2048), ones(65))},
        {"e = 0", rsa, null(), rsa_key(ones(2048), {0})},
        {"e = 1", rsa, null(), rsa_key(ones(2048), {1})},
        {"e even", rsa, null(), rsa_key(ones(2048), {0x01, 0x00})},
        {"e negative", rsa, null(), rsa_key(ones(2048), {0x83})},
        {"n even", rsa, null(), rsa_key(even(ones(2048)))},
        {"n negative", rsa, null(), rsa_key(Bytes(256, 0xFF))},
        {"other parameters", rsa, sequence(), rsa_key(ones(2048))},
        {"a third number", rsa, null(),
         sequence(integer_octets(ones(2048)), integer(3), integer(3))},
        {"bytes behind the key", rsa, null(), joined(rsa_key(ones(2048)), {0})},
        {"empty", rsa, null(), {}},
        {"too long to be looked at", rsa, null(), Bytes(1 << 20, 0x30)},

        {"1024 and 160 bits", dsa, dsa_parameters(ones(1024), ones(160)), integer(5), true},
        {"inherited parameters", dsa, {}, integer(5)},
        {"q of another size", dsa, dsa_parameters(ones(1024), ones(192)), integer(5)},
        {"p short", dsa, dsa_parameters(ones(1023), ones(160)), integer(5)},
        {"p long", dsa, dsa_parameters(ones(4097), ones(256)), integer(5)},
        {"p even", dsa, dsa_parameters(even(ones(1024)), ones(160)), integer(5)},
        {"g = 1", dsa, dsa_parameters(ones(1024), ones(160), {1}), integer(5)},
        {"g = p", dsa, dsa_parameters(ones(1024), ones(160), ones(1024)), integer(5)},
        {"y = 0", dsa, dsa_parameters(ones(1024), ones(160)), integer(0)},
        {"y = p", dsa, dsa_parameters(ones(1024), ones(160)), integer_octets(ones(1024))},

        {"uncompressed", ec, p256, point, true},
        {"compressed", ec, p256,
         joined({static_cast<std::uint8_t>(2 + point.back() % 2)}, compressed), true},
        {"point off the curve", ec, p256, with_changed_end(point)},
        {"point of another curve", ec, oid("1.3.132.0.34"), point},
        {"point at infinity", ec, p256, {0}},
        {"hybrid form", ec, p256,
         joined({static_cast<std::uint8_t>(6 + point.back() % 2)},
                Bytes(point.begin() + 1, point.end()))},
        {"no key", ec, p256, {}},
        {"unknown curve", ec, oid("1.3.132.0.10"), point},
        {"curve by its numbers", ec, sequence(integer(1), p256), point},
        {"implicit curve", ec, null(), point},
        {"an endless identifier", ec, oid("1.2.840.10045.3.1.4444444444444444"), point},

        {"2001", gost_2001, sequence(oid("1.2.643.2.2.35.1"), hash_set), point_a, true},
        {"2001 with the encryption set", gost_2001,
         sequence(oid("1.2.643.2.2.36.0"), hash_set, oid("1.2.643.2.2.31.1")), point_a, true},
        {"2012 without a digest set", gost_2012_256, gost_parameters("1.2.643.7.1.2.1.1.2"),
         point_a, true},
        {"2001 with other hash parameters", gost_2001,
         gost_parameters("1.2.643.2.2.35.1", "1.2.643.2.2.30.0"), point_a},
        {"point of another set", gost_2001, gost_parameters("1.2.643.2.2.35.2"), point_a},
        {"point off the curve", gost_2001, gost_parameters("1.2.643.2.2.35.1"),
         with_changed_end(point_a)},
        {"coordinate beyond p", gost_2001, gost_parameters("1.2.643.2.2.35.1"), point_a_beyond},
        {"all zeros", gost_2001, gost_parameters("1.2.643.2.2.35.1"), octet_string(Bytes(64))},
        {"set of the other length", gost_2012_512, gost_parameters("1.2.643.2.2.35.1"), point_a},
        {"key of the other length", gost_2012_256, gost_parameters("1.2.643.7.1.2.1.2.1"),
         octet_string(Bytes(128, 1))},
        {"unknown set", gost_2001, gost_parameters("1.2.643.2.2.35.9"), point_a},
        {"no set", gost_2001, sequence(), point_a},
        {"no parameters", gost_2012_256, {}, point_a},
        {"bare coordinates", gost_2001, gost_parameters("1.2.643.2.2.35.1"),
         Bytes(point_a.begin() + 2, point_a.end())},

        {"94", gost_94, gost_parameters("1.2.643.2.2.32.2"), octet_string(Bytes(128, 1)), true},
        {"94 with the weak set", gost_94, gost_parameters("1.2.643.2.2.32.0"),
         octet_string(Bytes(64, 1))},
        {"94 with y = 0", gost_94, gost_parameters("1.2.643.2.2.32.2"), octet_string(Bytes(128))},
        {"94 with y beyond p", gost_94, gost_parameters("1.2.643.2.2.32.2"),
         octet_string(Bytes(128, 0xFF))},
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

TEST(KeyImport, ChecksItsArguments) {
    const OwnedProvider provider = open_provider();
    Bytes key_bytes = rsa_key(ones(1024));
    std::string algorithm = rsa;
    const CERT_PUBLIC_KEY_INFO good{{algorithm.data(), {0, nullptr}},
                                    {static_cast<DWORD>(key_bytes.size()), key_bytes.data(), 0}};
    const auto error_of = [&provider](CERT_PUBLIC_KEY_INFO info, ALG_ID algid = 0,
                                      DWORD encoding = 0x10001, DWORD flags = 0,
                                      void* extra = nullptr) {
        HCRYPTKEY key = 0;
        const BOOL done =
            CryptImportPublicKeyInfoEx(provider, encoding, &info, algid, flags, extra, &key);
        const OwnedKey owner(key);
        return done != FALSE ? ERROR_SUCCESS : GetLastError();
    };
    EXPECT_EQ(error_of(good), ERROR_SUCCESS);
    EXPECT_EQ(error_of(good, CALG_RSA_SIGN), ERROR_SUCCESS);
    EXPECT_EQ(error_of(good, CALG_RSA_KEYX), ERROR_SUCCESS);
    EXPECT_EQ(error_of(good, CALG_DSS_SIGN), NTE_BAD_ALGID);
    EXPECT_EQ(error_of(good, 0, PKCS_7_ASN_ENCODING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of(good, 0, 1, 1), NTE_BAD_FLAGS);
    EXPECT_EQ(error_of(good, 0, 1, 0, &algorithm), ERROR_INVALID_PARAMETER);

    CERT_PUBLIC_KEY_INFO bad = good;
    bad.PublicKey.cUnusedBits = 1;
    EXPECT_EQ(error_of(bad), NTE_BAD_PUBLIC_KEY);
    bad = good;
    bad.PublicKey.pbData = nullptr;
    EXPECT_EQ(error_of(bad), ERROR_INVALID_PARAMETER);
    bad = good;
    bad.Algorithm.Parameters.cbData = 1;
    EXPECT_EQ(error_of(bad), ERROR_INVALID_PARAMETER);
    bad = good;
    bad.Algorithm.pszObjId = nullptr;
    EXPECT_EQ(error_of(bad), ERROR_INVALID_PARAMETER);
    for (std::string unknown : {"", "1.2.3", "1.2.840.113549.1.1.11", "2.16.840.1.101.3.4.2.1"}) {
        bad.Algorithm.pszObjId = unknown.data();
        EXPECT_EQ(error_of(bad), ERROR_FILE_NOT_FOUND) << unknown;
    }
}
