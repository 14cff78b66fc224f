#include "platform/crypto/LibcryptoKeys.h"

#include "platform/crypto/DerFields.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <openssl/core_names.h>

namespace norvane {
namespace {

/// The magnitude of an INTEGER; null if it is negative.
BigNumber big_number(const ASN1TInteger& integer) {
    const ByteView octets = integer.content();
    if (octets.empty() || (octets.data[0] & 0x80) != 0) {
        return nullptr;
    }
    return BigNumber(
        require(BN_bin2bn(octets.data, static_cast<int>(octets.length), nullptr), "BN_bin2bn"));
}

bool has_bits(const BIGNUM* number, int min, int max) {
    const int bits = BN_num_bits(number);
    return bits >= min && bits <= max;
}

/// Whether 1 < number < limit.
bool is_between_one_and(const BIGNUM* number, const BIGNUM* limit) {
    return BN_cmp(number, BN_value_one()) > 0 && BN_cmp(number, limit) < 0;
}

/// The numbers of a key on their way into libcrypto.
class KeyNumbers {
  public:
    KeyNumbers() : builder_(require(OSSL_PARAM_BLD_new(), "OSSL_PARAM_BLD_new")) {}

    /// `number` must live until the key is made.
    void push(const char* name, const BIGNUM* number) {
        require(OSSL_PARAM_BLD_push_BN(builder_.get(), name, number), name);
    }
    void push(const char* name, Octets octets) {
        require(
            OSSL_PARAM_BLD_push_octet_string(builder_.get(), name, octets.data(), octets.size()),
            name);
    }
    void push(const char* name, const char* text) {
        require(OSSL_PARAM_BLD_push_utf8_string(builder_.get(), name, text, 0), name);
    }

    /// The key; null if libcrypto does not take the numbers.
    [[nodiscard]] KeyPointer make(OSSL_LIB_CTX* library, const char* algorithm) {
        const Parameters parameters(
            require(OSSL_PARAM_BLD_to_param(builder_.get()), "OSSL_PARAM_BLD_to_param"));
        const KeyContext context(require(EVP_PKEY_CTX_new_from_name(library, algorithm, nullptr),
                                         "EVP_PKEY_CTX_new_from_name"));
        require(EVP_PKEY_fromdata_init(context.get()), "EVP_PKEY_fromdata_init");
        EVP_PKEY* key = nullptr;
        if (EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, parameters.get()) != 1) {
            return nullptr;
        }
        return KeyPointer(key);
    }

  private:
    ParameterBuilder builder_;
};

bool is_null_or_absent(Octets parameters) {
    constexpr std::array<std::uint8_t, 2> null{0x05, 0x00};
    return parameters.empty() || std::ranges::equal(parameters, null);
}

struct NamedCurve {
    std::string_view oid;
    const char* name;
};

// Curves with the strength of the weakest RSA key that is taken, or more.
constexpr NamedCurve named_curves[] = {
    {"1.2.840.10045.3.1.1", "P-192"},
    {"1.3.132.0.33", "P-224"},
    {"1.2.840.10045.3.1.7", "P-256"},
    {"1.3.132.0.34", "P-384"},
    {"1.3.132.0.35", "P-521"},
    {"1.3.36.3.3.2.8.1.1.1", "brainpoolP160r1"},
    {"1.3.36.3.3.2.8.1.1.2", "brainpoolP160t1"},
    {"1.3.36.3.3.2.8.1.1.3", "brainpoolP192r1"},
    {"1.3.36.3.3.2.8.1.1.4", "brainpoolP192t1"},
    {"1.3.36.3.3.2.8.1.1.5", "brainpoolP224r1"},
    {"1.3.36.3.3.2.8.1.1.6", "brainpoolP224t1"},
    {"1.3.36.3.3.2.8.1.1.7", "brainpoolP256r1"},
    {"1.3.36.3.3.2.8.1.1.8", "brainpoolP256t1"},
    {"1.3.36.3.3.2.8.1.1.9", "brainpoolP320r1"},
    {"1.3.36.3.3.2.8.1.1.10", "brainpoolP320t1"},
    {"1.3.36.3.3.2.8.1.1.11", "brainpoolP384r1"},
    {"1.3.36.3.3.2.8.1.1.12", "brainpoolP384t1"},
    {"1.3.36.3.3.2.8.1.1.13", "brainpoolP512r1"},
    {"1.3.36.3.3.2.8.1.1.14", "brainpoolP512t1"},
};

const char* curve_name(const ASN1TObjId& oid) {
    constexpr std::size_t longest = 32;
    ASN1OBJID arcs;
    std::array<char, longest> text{};
    if (!oid.get_arcs(arcs) || rtOidToStr(arcs, text.data(), text.size()) == 0) {
        return nullptr;
    }
    const auto* const found =
        std::ranges::find(named_curves, std::string_view(text.data()), &NamedCurve::oid);
    return found == std::end(named_curves) ? nullptr : found->name;
}

/// Whether the octets are a point with coordinates, compressed or not (SEC 1, 2.3.3). The point at
/// infinity is no key, and the hybrid form is not allowed in certificates.
bool has_point_form(Octets key) {
    constexpr std::uint8_t first_compressed = 0x02;
    constexpr std::uint8_t uncompressed = 0x04;
    return !key.empty() && key.front() >= first_compressed && key.front() <= uncompressed;
}

} // namespace

KeyPointer make_rsa_key(OSSL_LIB_CTX* library, Octets parameters, Octets key) {
    ASN1CTXT ctxt;
    BigNumber modulus;
    BigNumber exponent;
    const bool decoded = read_der(ctxt, key, [&](Reader& in) {
        Reader fields = in.enter(Tag::sequence, "RSAPublicKey");
        modulus = big_number(fields.integer(Tag::integer, "modulus"));
        exponent = big_number(fields.integer(Tag::integer, "publicExponent"));
        fields.finish();
    });
    if (!decoded || !is_null_or_absent(parameters) || modulus == nullptr || exponent == nullptr ||
        !has_bits(modulus.get(), min_rsa_bits, max_rsa_bits) || BN_is_odd(modulus.get()) == 0 ||
        !has_bits(exponent.get(), 2, max_rsa_exponent_bits) || BN_is_odd(exponent.get()) == 0) {
        return nullptr;
    }
    KeyNumbers numbers;
    numbers.push(OSSL_PKEY_PARAM_RSA_N, modulus.get());
    numbers.push(OSSL_PKEY_PARAM_RSA_E, exponent.get());
    return numbers.make(library, "RSA");
}

KeyPointer make_dsa_key(OSSL_LIB_CTX* library, Octets parameters, Octets key) {
    ASN1CTXT ctxt;
    BigNumber p;
    BigNumber q;
    BigNumber g;
    BigNumber y;
    const bool decoded = read_der(ctxt, parameters,
                                  [&](Reader& in) {
                                      Reader fields = in.enter(Tag::sequence, "Dss-Parms");
                                      p = big_number(fields.integer(Tag::integer, "p"));
                                      q = big_number(fields.integer(Tag::integer, "q"));
                                      g = big_number(fields.integer(Tag::integer, "g"));
                                      fields.finish();
                                  }) &&
                         read_der(ctxt, key, [&](Reader& in) {
                             y = big_number(in.integer(Tag::integer, "DSAPublicKey"));
                         });
    if (!decoded || p == nullptr || q == nullptr || g == nullptr || y == nullptr) {
        return nullptr;
    }
    const int q_bits = BN_num_bits(q.get());
    if (!has_bits(p.get(), min_dsa_bits, max_dsa_bits) || BN_is_odd(p.get()) == 0 ||
        BN_is_odd(q.get()) == 0 || (q_bits != 160 && q_bits != 224 && q_bits != 256) ||
        !is_between_one_and(g.get(), p.get()) || !is_between_one_and(y.get(), p.get())) {
        return nullptr;
    }
    KeyNumbers numbers;
    numbers.push(OSSL_PKEY_PARAM_FFC_P, p.get());
    numbers.push(OSSL_PKEY_PARAM_FFC_Q, q.get());
    numbers.push(OSSL_PKEY_PARAM_FFC_G, g.get());
    numbers.push(OSSL_PKEY_PARAM_PUB_KEY, y.get());
    return numbers.make(library, "DSA");
}

KeyPointer make_ec_key(OSSL_LIB_CTX* library, Octets parameters, Octets key) {
    ASN1CTXT ctxt;
    const char* curve = nullptr;
    const bool decoded = read_der(ctxt, parameters, [&](Reader& in) {
        curve = curve_name(in.object_identifier(Tag::object_identifier, "namedCurve"));
    });
    if (!decoded || curve == nullptr || !has_point_form(key)) {
        return nullptr;
    }
    KeyNumbers numbers;
    numbers.push(OSSL_PKEY_PARAM_GROUP_NAME, curve);
    numbers.push(OSSL_PKEY_PARAM_PUB_KEY, key);
    return numbers.make(library, "EC");
}

} // namespace norvane
