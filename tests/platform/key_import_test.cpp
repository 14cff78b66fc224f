#include "CryptoObjects.h"
#include "support/Key.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <openssl/bn.h>
#include <openssl/sha.h>
#include <tuple>
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

// An RSA key whose modulus is a product of small primes, so that it is quickly made of any length.
class SmoothRsaKey {
  public:
    SmoothRsaKey(int bits, const char* exponent) {
        BIGNUM* e = nullptr;
        BN_hex2bn(&e, exponent);
        e_.reset(e);
        BN_one(n_.get());
        BN_one(order_.get());
        constexpr int bits_of_the_last = 32;
        for (BN_ULONG prime = 3; BN_num_bits(n_.get()) < bits - bits_of_the_last; prime += 2) {
            const Number number(BN_new(), BN_free);
            BN_set_word(number.get(), prime);
            if (BN_check_prime(number.get(), context_.get(), nullptr) == 1) {
                multiply_by(prime);
            }
        }
        const Number last(BN_new(), BN_free);
        const Number product(BN_new(), BN_free);
        do {
            const int missing = bits - BN_num_bits(n_.get());
            BN_generate_prime_ex(last.get(), missing, 0, nullptr, nullptr, nullptr);
            BN_mul(product.get(), n_.get(), last.get(), context_.get());
        } while (BN_num_bits(product.get()) != bits || !multiply_by(BN_get_word(last.get())));
    }

    [[nodiscard]] Bytes encoded() const { return rsa_key(content(n_), content(e_)); }
    // EMSA-PKCS1-v1_5 with SHA-256, raised to the inverse of the exponent.
    [[nodiscard]] Bytes sign(const std::string& message) const {
        const auto size = static_cast<std::size_t>(BN_num_bytes(n_.get()));
        Bytes digest(32);
        SHA256(reinterpret_cast<const std::uint8_t*>(message.data()), message.size(),
               digest.data());
        const Bytes info = cat(hex("003031300d060960864801650304020105000420"), digest);
        Bytes em(size - info.size(), 0xFF);
        em[0] = 0;
        em[1] = 1;
        em.insert(em.end(), info.begin(), info.end());
        const Number m(BN_bin2bn(em.data(), static_cast<int>(size), nullptr), BN_free);
        const Number d(BN_mod_inverse(nullptr, e_.get(), order_.get(), context_.get()), BN_free);
        BN_mod_exp(m.get(), m.get(), d.get(), n_.get(), context_.get());
        Bytes signature(size);
        BN_bn2binpad(m.get(), signature.data(), static_cast<int>(size));
        return signature;
    }

  private:
    using Number = std::unique_ptr<BIGNUM, decltype(&BN_free)>;

    // Takes a prime that goes with the exponent.
    bool multiply_by(BN_ULONG prime) {
        if (std::gcd(BN_mod_word(e_.get(), prime - 1), prime - 1) != 1) {
            return false;
        }
        BN_mul_word(order_.get(), prime - 1);
        return BN_mul_word(n_.get(), prime) == 1;
    }
    static Bytes content(const Number& number) {
        Bytes octets(static_cast<std::size_t>(BN_num_bytes(number.get())) + 1);
        BN_bn2binpad(number.get(), octets.data(), static_cast<int>(octets.size()));
        return octets;
    }

    std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> context_{BN_CTX_new(), BN_CTX_free};
    Number n_{BN_new(), BN_free};
    Number e_{nullptr, BN_free};
    Number order_{BN_new(), BN_free}; // of the numbers modulo n
};

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

// A key for each row, and one that holds no signature where the bits are none: there also the wrong
// hash is no more than a bad signature.
TEST(KeyImport, TakesBitsThatAreNoKeyForOneThatSignedNothing) {
    const OwnedProvider libcrypto = open_provider();
    const OwnedProvider gost = open_provider(PROV_NORVANE_GOST);
    const OwnedHash hash = hash_of(gost, CALG_NORVANE_GOST_R3411_94, {});
    const OwnedHash other_hash = hash_of(gost, CALG_NORVANE_GOST_R3411_2012_512, {});
    for (const Row& row : rows()) {
        SCOPED_TRACE(std::string(row.algorithm) + ": " + row.what);
        const bool is_gost = std::string_view(row.algorithm).starts_with("1.2.643.");
        const KeyParts parts{row.algorithm, row.parameters, row.key};
        const OwnedKey key = parts.import_into(is_gost ? gost : libcrypto);
        ASSERT_NE(key, 0U);
        if (is_gost) {
            const DWORD errors[] = {verify(hash, Bytes(64, 1), key),
                                    verify(other_hash, Bytes(64, 1), key)};
            EXPECT_EQ(std::ranges::count(errors, NTE_BAD_ALGID), row.accepted ? 1 : 0);
            EXPECT_EQ(std::ranges::count(errors, NTE_BAD_SIGNATURE), row.accepted ? 1 : 2);
        }
        const OwnedKey elsewhere = parts.import_into(is_gost ? libcrypto : gost);
        EXPECT_EQ(elsewhere, 0U);
        EXPECT_EQ(GetLastError(), NTE_BAD_ALGID);
    }
}

// Signatures that would be good, were the key one that is taken.
TEST(KeyImport, TakesKeysOfLibcryptoInTheFormsAndWithinTheLimitsOfTheHeader) {
    const OwnedProvider provider = open_provider();
    const OwnedHash hash = hash_of(provider, CALG_SHA_256, text_bytes("abc"));
    for (const auto& [bits, e, accepted] : {std::tuple(1024, "10001", true),
                                            {1023, "10001", false},
                                            {1024, "3", true},
                                            {1024, "8000000000000055", true},
                                            {1024, "10000000000000051", false},
                                            {16384, "10001", true},
                                            {16385, "10001", false}}) {
        const SmoothRsaKey pair(bits, e);
        const OwnedKey key = KeyParts{rsa, null(), pair.encoded()}.import_into(provider);
        EXPECT_EQ(verify(hash, pair.sign("abc"), key), accepted ? ERROR_SUCCESS : NTE_BAD_SIGNATURE)
            << bits << " bits, e = " << e;
    }
    const Bytes spki = Key::ec(0).spki();
    const Bytes point(spki.end() - 65, spki.end());
    const Bytes x(point.begin() + 1, point.begin() + 33);
    const auto sign_of_y = static_cast<std::uint8_t>(point.back() % 2);
    const auto with_form = [](int form, Bytes octets) {
        octets.insert(octets.begin(), static_cast<std::uint8_t>(form));
        return octets;
    };
    const Bytes xy(point.begin() + 1, point.end());
    for (const auto& [octets, accepted] : {std::pair(point, true),
                                           {with_form(2 + sign_of_y, x), true},
                                           {with_form(3 - sign_of_y, x), false},
                                           {with_form(6 + sign_of_y, xy), false},
                                           {with_form(4, cat(xy, Bytes{0})), false}}) {
        const OwnedKey key = KeyParts{ec, oid("1.2.840.10045.3.1.7"), octets}.import_into(provider);
        EXPECT_EQ(verify(hash, Key::ec(0).sign(text_bytes("abc")), key),
                  accepted ? ERROR_SUCCESS : NTE_BAD_SIGNATURE)
            << int{octets.front()};
    }
}
