#include "platform/crypto/DerFields.h"
#include "platform/crypto/LibcryptoKeys.h"
#include "platform/crypto/LibcryptoNumbers.h"

#include <utility>

namespace norvane {
namespace {

/// The numbers of RFC 3279 2.3.2.
struct DsaNumbers {
    BigNumber p;
    BigNumber q;
    BigNumber g;
    BigNumber y;
};

class DsaKey final : public PublicKey {
  public:
    explicit DsaKey(DsaNumbers numbers)
        : numbers_(std::move(numbers)),
          montgomery_(new_montgomery_context(numbers_.p.get(), new_number_context().get())) {}

    /// FIPS 186-4 4.7.
    [[nodiscard]] Verdict verify(ALG_ID hash, Octets digest, Octets signature) const override {
        const ErrorQueueGuard guard;
        if (!is_sha_hash(hash)) {
            return Verdict::wrong_hash;
        }
        const auto& [p, q, g, y] = numbers_;
        const auto pair = SignaturePair::read(signature, q.get());
        if (!pair) {
            return Verdict::bad;
        }
        const NumberContext context = new_number_context();
        const BigNumber w = inverse_modulo_prime(pair->s.get(), context.get());
        const VerificationFactors factors(*pair, digest, w.get(), q.get(), context.get());
        const BigNumber v = new_number();
        require(BN_mod_exp2_mont(v.get(), g.get(), factors.u1.get(), y.get(), factors.u2.get(),
                                 p.get(), context.get(), montgomery_.get()),
                "BN_mod_exp2_mont");
        require(BN_nnmod(v.get(), v.get(), q.get(), context.get()), "BN_nnmod");
        return BN_cmp(v.get(), pair->r.get()) == 0 ? Verdict::good : Verdict::bad;
    }

  private:
    /// The inverse of s modulo q by Fermat's theorem. Over a q that is no prime, which nobody has
    /// checked, it is some number, where to look for an inverse might fail.
    [[nodiscard]] BigNumber inverse_modulo_prime(const BIGNUM* s, BN_CTX* context) const {
        BigNumber exponent(require(BN_dup(numbers_.q.get()), "BN_dup"));
        require(BN_sub_word(exponent.get(), 2), "BN_sub_word");
        BigNumber inverse = new_number();
        require(
            BN_mod_exp_mont(inverse.get(), s, exponent.get(), numbers_.q.get(), context, nullptr),
            "BN_mod_exp_mont");
        return inverse;
    }

    DsaNumbers numbers_;
    // Only read, in spite of what libcrypto's declarations say.
    MontgomeryContext montgomery_;
};

/// Whether 1 < number < limit.
bool is_between_one_and(const BIGNUM* number, const BIGNUM* limit) {
    return BN_cmp(number, BN_value_one()) > 0 && BN_cmp(number, limit) < 0;
}

bool is_within_limits(const DsaNumbers& numbers) {
    const auto& [p, q, g, y] = numbers;
    if (p == nullptr || q == nullptr || g == nullptr || y == nullptr) {
        return false;
    }
    const int q_bits = BN_num_bits(q.get());
    return has_bits(p.get(), min_dsa_bits, max_dsa_bits) && BN_is_odd(p.get()) != 0 &&
           BN_is_odd(q.get()) != 0 && (q_bits == 160 || q_bits == 224 || q_bits == 256) &&
           is_between_one_and(g.get(), p.get()) && is_between_one_and(y.get(), p.get());
}

} // namespace

std::shared_ptr<const PublicKey> import_dsa_key(Octets parameters, Octets key) {
    ASN1CTXT ctxt;
    DsaNumbers numbers;
    const auto read_parameters = [&](Reader& in) {
        Reader fields = in.enter(Tag::sequence, "Dss-Parms");
        numbers.p = number_of(fields.integer(Tag::integer, "p"));
        numbers.q = number_of(fields.integer(Tag::integer, "q"));
        numbers.g = number_of(fields.integer(Tag::integer, "g"));
        fields.finish();
    };
    const auto read_key = [&](Reader& in) {
        numbers.y = number_of(in.integer(Tag::integer, "DSAPublicKey"));
    };
    if (!read_der(ctxt, parameters, read_parameters) || !read_der(ctxt, key, read_key) ||
        !is_within_limits(numbers)) {
        return nullptr;
    }
    return std::make_shared<DsaKey>(std::move(numbers));
}

} // namespace norvane
