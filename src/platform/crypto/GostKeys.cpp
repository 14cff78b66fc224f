#include "platform/crypto/GostKeys.h"

#include "platform/crypto/GostCurves.h"
#include "platform/crypto/GostKeyInfo.h"

#include <algorithm>
#include <utility>

#include <botan/point_gfp.h>

namespace norvane {
namespace {

using Botan::BigInt;

struct Generation {
    ALG_ID algorithm;
    ALG_ID hash;
    std::size_t number_size; ///< octets of a coordinate, and of half a signature
    /// The one digestParamSet that the hash is computed with; empty where the hash has no
    /// parameters, so that it does not matter which are named.
    std::string_view digest_set;
};

constexpr Generation generations[] = {
    {CALG_NORVANE_GOST_R3410_2001, CALG_NORVANE_GOST_R3411_94, 32, gost_r3411_94_parameters},
    {CALG_NORVANE_GOST_R3410_2012_256, CALG_NORVANE_GOST_R3411_2012_256, 32, {}},
    {CALG_NORVANE_GOST_R3410_2012_512, CALG_NORVANE_GOST_R3411_2012_512, 64, {}},
};

class GostKey final : public PublicKey {
  public:
    GostKey(const Generation& generation, const Botan::EC_Group& group, Botan::PointGFp point)
        : generation_(generation), group_(group), point_(std::move(point)) {}

    /// The verification equation over the numbers and points of Botan (RFC 7091 6.2). Botan's own
    /// verifier does not reduce the x coordinate modulo the order, which fails good signatures over
    /// curves with a cofactor.
    Verdict verify(ALG_ID hash, Octets digest, Octets signature) const override {
        if (hash != generation_.hash) {
            return Verdict::wrong_hash;
        }
        const BigInt& order = group_.get_order();
        const auto numbers = GostSignature::read(signature, generation_.number_size, order);
        if (!numbers) {
            return Verdict::bad;
        }
        BigInt e = group_.mod_order(little_endian_number(digest));
        if (e.is_zero()) {
            e = 1;
        }
        const BigInt v = group_.inverse_mod_order(e);
        const BigInt z1 = group_.multiply_mod_order(numbers->s, v);
        const BigInt z2 = group_.multiply_mod_order(order - numbers->r, v);
        const Botan::PointGFp c = group_.point_multiply(z1, point_, z2);
        return !c.is_zero() && group_.mod_order(c.get_affine_x()) == numbers->r ? Verdict::good
                                                                                : Verdict::bad;
    }

  private:
    const Generation& generation_;
    const Botan::EC_Group& group_;
    Botan::PointGFp point_;
};

} // namespace

std::shared_ptr<const PublicKey> import_gost_key(ALG_ID algorithm, Octets parameters, Octets key) {
    const auto* const generation =
        std::ranges::find(generations, algorithm, &Generation::algorithm);
    const auto named = read_gost_parameters(parameters);
    if (generation == std::end(generations) || !named) {
        return nullptr;
    }
    if (!generation->digest_set.empty() && !is_digest_set(*named, generation->digest_set)) {
        return nullptr;
    }
    const Botan::EC_Group* const group = find_gost_curve(named->public_key_set.data());
    const auto coordinates = read_gost_key(key, 2 * generation->number_size);
    if (group == nullptr || group->get_p_bytes() != generation->number_size || !coordinates) {
        return nullptr;
    }
    const Octets octets = *coordinates;
    const BigInt x = little_endian_number(octets.first(generation->number_size));
    const BigInt y = little_endian_number(octets.last(generation->number_size));
    if (x >= group->get_p() || y >= group->get_p()) {
        return nullptr;
    }
    Botan::PointGFp point = group->point(x, y);
    if (!point.on_the_curve()) {
        return nullptr;
    }
    return std::make_shared<GostKey>(*generation, *group, std::move(point));
}

} // namespace norvane
