#include "platform/crypto/LibcryptoNumbers.h"

#include "platform/crypto/DerFields.h"

namespace norvane {
namespace {

/// The content of a positive INTEGER in DER, which has no zeros in front but for the sign.
bool is_minimal(ByteView content) {
    constexpr std::uint8_t sign_bit = 0x80;
    return content.length == 1 || content.data[0] != 0 || (content.data[1] & sign_bit) != 0;
}

/// The length of a SEQUENCE of two INTEGERs of less than 128 octets each.
std::size_t size_in_der(ByteView first, ByteView second) {
    constexpr std::size_t short_header = 2;
    constexpr std::size_t longest_short_content = 127;
    const std::size_t content = 2 * short_header + first.length + second.length;
    return short_header + (content > longest_short_content ? 1 : 0) + content;
}

bool is_from_one_below(const BIGNUM* number, const BIGNUM* limit) {
    return BN_is_zero(number) == 0 && BN_cmp(number, limit) < 0;
}

} // namespace

BigNumber new_number() { return BigNumber(require(BN_new(), "BN_new")); }

NumberContext new_number_context() { return NumberContext(require(BN_CTX_new(), "BN_CTX_new")); }

MontgomeryContext new_montgomery_context(const BIGNUM* modulus, BN_CTX* context) {
    MontgomeryContext made(require(BN_MONT_CTX_new(), "BN_MONT_CTX_new"));
    require(BN_MONT_CTX_set(made.get(), modulus, context), "BN_MONT_CTX_set");
    return made;
}

BigNumber number_of(Octets octets) {
    return BigNumber(
        require(BN_bin2bn(octets.data(), static_cast<int>(octets.size()), nullptr), "BN_bin2bn"));
}

BigNumber number_of(const ASN1TInteger& integer) {
    constexpr std::uint8_t sign_bit = 0x80;
    const ByteView octets = integer.content();
    if (octets.empty() || (octets.data[0] & sign_bit) != 0) {
        return nullptr;
    }
    return number_of(Octets{octets.data, octets.length});
}

bool has_bits(const BIGNUM* number, int min, int max) {
    const int bits = BN_num_bits(number);
    return bits >= min && bits <= max;
}

std::optional<SignaturePair> SignaturePair::read(Octets octets, const BIGNUM* order) {
    ASN1CTXT ctxt;
    ASN1TInteger r;
    ASN1TInteger s;
    const bool decoded = read_der(ctxt, octets, [&](Reader& in) {
        Reader fields = in.enter(Tag::sequence, "Dss-Sig-Value");
        r = fields.integer(Tag::integer, "r");
        s = fields.integer(Tag::integer, "s");
        fields.finish();
    });
    if (!decoded || !is_minimal(r.content()) || !is_minimal(s.content()) ||
        octets.size() != size_in_der(r.content(), s.content())) {
        return std::nullopt;
    }
    SignaturePair pair{number_of(r), number_of(s)};
    if (pair.r == nullptr || pair.s == nullptr || !is_from_one_below(pair.r.get(), order) ||
        !is_from_one_below(pair.s.get(), order)) {
        return std::nullopt;
    }
    return pair;
}

BigNumber number_of_digest(Octets digest, const BIGNUM* order) {
    constexpr int octet_bits = 8;
    const int order_bits = BN_num_bits(order);
    const int digest_bits = static_cast<int>(digest.size()) * octet_bits;
    BigNumber number = number_of(digest);
    if (digest_bits > order_bits) {
        require(BN_rshift(number.get(), number.get(), digest_bits - order_bits), "BN_rshift");
    }
    return number;
}

VerificationFactors::VerificationFactors(const SignaturePair& signature, Octets digest,
                                         const BIGNUM* inverse_of_s, const BIGNUM* order,
                                         BN_CTX* context)
    : u1(new_number()), u2(new_number()) {
    const BigNumber e = number_of_digest(digest, order);
    require(BN_mod_mul(u1.get(), e.get(), inverse_of_s, order, context), "BN_mod_mul");
    require(BN_mod_mul(u2.get(), signature.r.get(), inverse_of_s, order, context), "BN_mod_mul");
}

} // namespace norvane
