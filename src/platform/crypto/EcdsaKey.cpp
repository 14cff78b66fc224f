#include "platform/crypto/DerFields.h"
#include "platform/crypto/LibcryptoKeys.h"
#include "platform/crypto/LibcryptoNumbers.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include <openssl/obj_mac.h>

namespace norvane {
namespace {

struct NamedCurve {
    std::string_view oid;
    int number; ///< libcrypto's
};

// Curves with the strength of the weakest RSA key that is taken, or more. All have prime order.
constexpr NamedCurve named_curves[] = {
    {"1.2.840.10045.3.1.1", NID_X9_62_prime192v1},
    {"1.3.132.0.33", NID_secp224r1},
    {"1.2.840.10045.3.1.7", NID_X9_62_prime256v1},
    {"1.3.132.0.34", NID_secp384r1},
    {"1.3.132.0.35", NID_secp521r1},
    {"1.3.36.3.3.2.8.1.1.1", NID_brainpoolP160r1},
    {"1.3.36.3.3.2.8.1.1.2", NID_brainpoolP160t1},
    {"1.3.36.3.3.2.8.1.1.3", NID_brainpoolP192r1},
    {"1.3.36.3.3.2.8.1.1.4", NID_brainpoolP192t1},
    {"1.3.36.3.3.2.8.1.1.5", NID_brainpoolP224r1},
    {"1.3.36.3.3.2.8.1.1.6", NID_brainpoolP224t1},
    {"1.3.36.3.3.2.8.1.1.7", NID_brainpoolP256r1},
    {"1.3.36.3.3.2.8.1.1.8", NID_brainpoolP256t1},
    {"1.3.36.3.3.2.8.1.1.9", NID_brainpoolP320r1},
    {"1.3.36.3.3.2.8.1.1.10", NID_brainpoolP320t1},
    {"1.3.36.3.3.2.8.1.1.11", NID_brainpoolP384r1},
    {"1.3.36.3.3.2.8.1.1.12", NID_brainpoolP384t1},
    {"1.3.36.3.3.2.8.1.1.13", NID_brainpoolP512r1},
    {"1.3.36.3.3.2.8.1.1.14", NID_brainpoolP512t1},
};

/// Whether this build of libcrypto has the curve; some leave curves out.
bool is_built_in(int curve) {
    std::vector<EC_builtin_curve> curves(EC_get_builtin_curves(nullptr, 0));
    EC_get_builtin_curves(curves.data(), curves.size());
    return std::ranges::find(curves, curve, &EC_builtin_curve::nid) != curves.end();
}

/// libcrypto's number for the curve, 0 if there is none.
int curve_number(const ASN1TObjId& oid) {
    constexpr std::size_t longest = 32;
    ASN1OBJID arcs;
    std::array<char, longest> text{};
    if (!oid.get_arcs(arcs) || rtOidToStr(arcs, text.data(), text.size()) == 0) {
        return 0;
    }
    const auto* const found =
        std::ranges::find(named_curves, std::string_view(text.data()), &NamedCurve::oid);
    return found != std::end(named_curves) && is_built_in(found->number) ? found->number : 0;
}

/// The affine points of y^2 = x^3 + a*x + b modulo p.
class CurveEquation {
  public:
    CurveEquation(const EC_GROUP* group, BN_CTX* context)
        : context_(context), p_(new_number()), a_(new_number()), b_(new_number()) {
        require(EC_GROUP_get_curve(group, p_.get(), a_.get(), b_.get(), context_),
                "EC_GROUP_get_curve");
    }

    /// Octets of a coordinate.
    [[nodiscard]] std::size_t size() const {
        return static_cast<std::size_t>(BN_num_bytes(p_.get()));
    }
    [[nodiscard]] bool is_coordinate(const BIGNUM* number) const {
        return BN_cmp(number, p_.get()) < 0;
    }
    [[nodiscard]] bool is_met_by(const BIGNUM* x, const BIGNUM* y) const {
        const BigNumber square = new_number();
        require(BN_mod_sqr(square.get(), y, p_.get(), context_), "BN_mod_sqr");
        return BN_cmp(square.get(), square_of_y(x).get()) == 0;
    }
    /// The y of a compressed point (SEC 1, 2.3.4); null if there is none.
    [[nodiscard]] BigNumber find_y(const BIGNUM* x, bool odd) const {
        constexpr int failed = -2;
        const BigNumber square = square_of_y(x);
        const int symbol = BN_kronecker(square.get(), p_.get(), context_);
        require(symbol != failed ? 1 : 0, "BN_kronecker");
        if (symbol != 1) { // 0 is a point of order two, which no curve of prime order has.
            return nullptr;
        }
        BigNumber y(require(BN_mod_sqrt(nullptr, square.get(), p_.get(), context_), "BN_mod_sqrt"));
        if ((BN_is_odd(y.get()) != 0) != odd) {
            require(BN_sub(y.get(), p_.get(), y.get()), "BN_sub");
        }
        return y;
    }

  private:
    [[nodiscard]] BigNumber square_of_y(const BIGNUM* x) const {
        BigNumber sum = new_number();
        require(BN_mod_sqr(sum.get(), x, p_.get(), context_), "BN_mod_sqr");
        require(BN_mod_add(sum.get(), sum.get(), a_.get(), p_.get(), context_), "BN_mod_add");
        require(BN_mod_mul(sum.get(), sum.get(), x, p_.get(), context_), "BN_mod_mul");
        require(BN_mod_add(sum.get(), sum.get(), b_.get(), p_.get(), context_), "BN_mod_add");
        return sum;
    }

    BN_CTX* context_;
    BigNumber p_;
    BigNumber a_;
    BigNumber b_;
};

/// Reads a point with coordinates, compressed or not (SEC 1, 2.3.4); null if the octets are none.
/// The point at infinity is no key, and the hybrid form is not allowed in certificates.
CurvePoint read_point(const EC_GROUP* group, Octets key, BN_CTX* context) {
    constexpr std::uint8_t compressed_even = 0x02;
    constexpr std::uint8_t compressed_odd = 0x03;
    constexpr std::uint8_t uncompressed = 0x04;
    const CurveEquation equation(group, context);
    const std::size_t size = equation.size();
    const std::uint8_t form = key.empty() ? std::uint8_t{0} : key.front();
    const bool is_compressed = form == compressed_even || form == compressed_odd;
    if ((!is_compressed || key.size() != 1 + size) &&
        (form != uncompressed || key.size() != 1 + 2 * size)) {
        return nullptr;
    }
    const BigNumber x = number_of(key.subspan(1, size));
    if (!equation.is_coordinate(x.get())) {
        return nullptr;
    }
    const BigNumber y = is_compressed ? equation.find_y(x.get(), form == compressed_odd)
                                      : number_of(key.subspan(1 + size));
    if (y == nullptr || !equation.is_coordinate(y.get()) || !equation.is_met_by(x.get(), y.get())) {
        return nullptr;
    }
    CurvePoint point(require(EC_POINT_new(group), "EC_POINT_new"));
    require(EC_POINT_set_affine_coordinates(group, point.get(), x.get(), y.get(), context),
            "EC_POINT_set_affine_coordinates");
    return point;
}

class EcdsaKey final : public PublicKey {
  public:
    EcdsaKey(CurveGroup group, CurvePoint point)
        : group_(std::move(group)), point_(std::move(point)) {}

    /// FIPS 186-4 6.4, which is SEC 1, 4.1.4.
    [[nodiscard]] Verdict verify(ALG_ID hash, Octets digest, Octets signature) const override {
        const ErrorQueueGuard guard;
        if (!is_sha_hash(hash)) {
            return Verdict::wrong_hash;
        }
        const BIGNUM* const order = EC_GROUP_get0_order(group_.get());
        const auto pair = SignaturePair::read(signature, order);
        if (!pair) {
            return Verdict::bad;
        }
        const NumberContext context = new_number_context();
        const BigNumber w(require(BN_mod_inverse(nullptr, pair->s.get(), order, context.get()),
                                  "BN_mod_inverse"));
        const VerificationFactors factors(*pair, digest, w.get(), order, context.get());
        const CurvePoint sum(require(EC_POINT_new(group_.get()), "EC_POINT_new"));
        require(EC_POINT_mul(group_.get(), sum.get(), factors.u1.get(), point_.get(),
                             factors.u2.get(), context.get()),
                "EC_POINT_mul");
        // Who knows the private key can choose r so that there is no x.
        if (EC_POINT_is_at_infinity(group_.get(), sum.get()) != 0) {
            return Verdict::bad;
        }
        const BigNumber x = new_number();
        require(EC_POINT_get_affine_coordinates(group_.get(), sum.get(), x.get(), nullptr,
                                                context.get()),
                "EC_POINT_get_affine_coordinates");
        require(BN_nnmod(x.get(), x.get(), order, context.get()), "BN_nnmod");
        return BN_cmp(x.get(), pair->r.get()) == 0 ? Verdict::good : Verdict::bad;
    }

  private:
    CurveGroup group_;
    CurvePoint point_;
};

} // namespace

std::shared_ptr<const PublicKey> import_ecdsa_key(OSSL_LIB_CTX* library, Octets parameters,
                                                  Octets key) {
    ASN1CTXT ctxt;
    int curve = 0;
    const bool decoded = read_der(ctxt, parameters, [&](Reader& in) {
        curve = curve_number(in.object_identifier(Tag::object_identifier, "namedCurve"));
    });
    if (!decoded || curve == 0) {
        return nullptr;
    }
    CurveGroup group(require(EC_GROUP_new_by_curve_name_ex(library, nullptr, curve),
                             "EC_GROUP_new_by_curve_name_ex"));
    CurvePoint point = read_point(group.get(), key, new_number_context().get());
    return point == nullptr ? nullptr
                            : std::make_shared<EcdsaKey>(std::move(group), std::move(point));
}

} // namespace norvane
