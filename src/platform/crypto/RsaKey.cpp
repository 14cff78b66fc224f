#include "platform/crypto/DerFields.h"
#include "platform/crypto/LibcryptoKeys.h"
#include "platform/crypto/LibcryptoNumbers.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace norvane {
namespace {

/// What stands before the digest in DigestInfo (RFC 8017 9.2, note 1).
struct DigestPrefix {
    ALG_ID hash;
    std::array<std::uint8_t, 19> octets;
    std::size_t size;

    [[nodiscard]] Octets view() const noexcept { return {octets.data(), size}; }
};

// clang-format off
constexpr DigestPrefix digest_prefixes[] = {
    {CALG_SHA1,    {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2b, 0x0e, 0x03, 0x02, 0x1a, 0x05, 0x00, 0x04, 0x14}, 15},
    {CALG_SHA_256, {0x30, 0x31, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x01, 0x05, 0x00, 0x04, 0x20}, 19},
    {CALG_SHA_384, {0x30, 0x41, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x02, 0x05, 0x00, 0x04, 0x30}, 19},
    {CALG_SHA_512, {0x30, 0x51, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x03, 0x05, 0x00, 0x04, 0x40}, 19},
};
// clang-format on

const DigestPrefix* find_prefix(ALG_ID hash) noexcept {
    const auto* const found = std::ranges::find(digest_prefixes, hash, &DigestPrefix::hash);
    return found == std::end(digest_prefixes) ? nullptr : found;
}

/// EMSA-PKCS1-v1_5 (RFC 8017 9.2) in `size` octets, which are more than enough.
std::vector<std::uint8_t> encoded_message(const DigestPrefix& prefix, Octets digest,
                                          std::size_t size) {
    std::vector<std::uint8_t> message(size, 0xFF);
    message[0] = 0x00;
    message[1] = 0x01;
    const auto digest_place = message.end() - static_cast<std::ptrdiff_t>(digest.size());
    const auto prefix_place = digest_place - static_cast<std::ptrdiff_t>(prefix.size);
    prefix_place[-1] = 0x00;
    std::ranges::copy(prefix.view(), prefix_place);
    std::ranges::copy(digest, digest_place);
    return message;
}

class RsaKey final : public PublicKey {
  public:
    RsaKey(BigNumber modulus, BigNumber exponent)
        : modulus_(std::move(modulus)), exponent_(std::move(exponent)),
          montgomery_(new_montgomery_context(modulus_.get(), new_number_context().get())) {}

    /// RFC 8017 8.2.2, with the encoded messages compared as numbers.
    [[nodiscard]] Verdict verify(ALG_ID hash, Octets digest, Octets signature) const override {
        const ErrorQueueGuard guard;
        const DigestPrefix* const prefix = find_prefix(hash);
        if (prefix == nullptr) {
            return Verdict::wrong_hash;
        }
        const auto size = static_cast<std::size_t>(BN_num_bytes(modulus_.get()));
        if (signature.size() != size) {
            return Verdict::bad;
        }
        const BigNumber s = number_of(signature);
        if (BN_cmp(s.get(), modulus_.get()) >= 0) {
            return Verdict::bad;
        }
        const BigNumber m = new_number();
        require(BN_mod_exp_mont(m.get(), s.get(), exponent_.get(), modulus_.get(),
                                new_number_context().get(), montgomery_.get()),
                "BN_mod_exp_mont");
        const BigNumber expected = number_of(encoded_message(*prefix, digest, size));
        return BN_cmp(m.get(), expected.get()) == 0 ? Verdict::good : Verdict::bad;
    }

  private:
    BigNumber modulus_;
    BigNumber exponent_;
    // Only read, in spite of what libcrypto's declarations say.
    MontgomeryContext montgomery_;
};

bool is_null_or_absent(Octets parameters) {
    constexpr std::array<std::uint8_t, 2> null{0x05, 0x00};
    return parameters.empty() || std::ranges::equal(parameters, null);
}

} // namespace

bool is_sha_hash(ALG_ID hash) noexcept { return find_prefix(hash) != nullptr; }

std::shared_ptr<const PublicKey> import_rsa_key(Octets parameters, Octets key) {
    ASN1CTXT ctxt;
    BigNumber modulus;
    BigNumber exponent;
    const bool decoded = read_der(ctxt, key, [&](Reader& in) {
        Reader fields = in.enter(Tag::sequence, "RSAPublicKey");
        modulus = number_of(fields.integer(Tag::integer, "modulus"));
        exponent = number_of(fields.integer(Tag::integer, "publicExponent"));
        fields.finish();
    });
    if (!decoded || !is_null_or_absent(parameters) || modulus == nullptr || exponent == nullptr ||
        !has_bits(modulus.get(), min_rsa_bits, max_rsa_bits) || BN_is_odd(modulus.get()) == 0 ||
        !has_bits(exponent.get(), 2, max_rsa_exponent_bits) || BN_is_odd(exponent.get()) == 0) {
        return nullptr;
    }
    return std::make_shared<RsaKey>(std::move(modulus), std::move(exponent));
}

} // namespace norvane
