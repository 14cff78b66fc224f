#include "platform/crypto/Gost94Key.h"

#include "platform/crypto/Gost94Groups.h"
#include "platform/crypto/GostKeyInfo.h"

#include <utility>

#include <botan/numthry.h>

namespace norvane {
namespace {

using Botan::BigInt;

constexpr std::size_t signature_number_size = 32;

class Gost94Key final : public PublicKey {
  public:
    Gost94Key(const Gost94Group& group, BigInt y) : group_(group), y_(std::move(y)) {}

    /// The verification of GOST R 34.10-94 over the numbers of Botan, which does not have it.
    Verdict verify(ALG_ID hash, Octets digest, Octets signature) const override {
        if (hash != CALG_NORVANE_GOST_R3411_94) {
            return Verdict::wrong_hash;
        }
        const auto& [p, q, a] = group_;
        const auto numbers = GostSignature::read(signature, signature_number_size, q);
        if (!numbers) {
            return Verdict::bad;
        }
        BigInt e = little_endian_number(digest) % q;
        if (e.is_zero()) {
            e = 1;
        }
        const BigInt v = Botan::inverse_mod(e, q);
        const BigInt z1 = numbers->s * v % q;
        const BigInt z2 = (q - numbers->r) * v % q;
        const BigInt u = Botan::power_mod(a, z1, p) * Botan::power_mod(y_, z2, p) % p % q;
        return u == numbers->r ? Verdict::good : Verdict::bad;
    }

  private:
    const Gost94Group& group_;
    BigInt y_;
};

} // namespace

std::shared_ptr<const PublicKey> import_gost_94_key(Octets parameters, Octets key) {
    const auto named = read_gost_parameters(parameters);
    if (!named || !is_digest_set(*named, gost_r3411_94_parameters)) {
        return nullptr;
    }
    const Gost94Group* const group = find_gost_94_group(named->public_key_set.data());
    if (group == nullptr) {
        return nullptr;
    }
    const auto octets = read_gost_key(key, group->p.bytes());
    if (!octets) {
        return nullptr;
    }
    BigInt y = little_endian_number(*octets);
    if (y <= 1 || y >= group->p) {
        return nullptr;
    }
    return std::make_shared<Gost94Key>(*group, std::move(y));
}

} // namespace norvane
