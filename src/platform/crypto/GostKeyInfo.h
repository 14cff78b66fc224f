#pragma once

#include "platform/crypto/Provider.h"

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include <botan/bigint.h>

namespace norvane {

/// The identifiers in the parameters of a GOST key, as dotted text.
struct GostKeyParameters {
    static constexpr std::size_t text_size = 32;
    using Text = std::array<char, text_size>;

    Text public_key_set{};
    Text digest_set{}; ///< empty if absent
};

/// Reads SEQUENCE { publicKeyParamSet, digestParamSet OPTIONAL, encryptionParamSet OPTIONAL }, all
/// of them identifiers (RFC 4491 2.3.1, 2.3.2; RFC 9215 4.2). Nothing if that is not what it is. An
/// identifier too long for its place reads as empty.
[[nodiscard]] std::optional<GostKeyParameters> read_gost_parameters(Octets parameters);

/// The parameters that GOST R 34.11-94 is computed with here.
inline constexpr std::string_view gost_r3411_94_parameters = "1.2.643.2.2.30.1";

/// Whether the parameters name this digest set or none.
[[nodiscard]] bool is_digest_set(const GostKeyParameters& parameters, std::string_view set);

/// The content of the OCTET STRING that wraps a GOST key, which must be `size` octets. Nothing if
/// it is not.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> read_gost_key(Octets key, std::size_t size);

[[nodiscard]] Botan::BigInt little_endian_number(Octets octets);
[[nodiscard]] Botan::BigInt big_endian_number(Octets octets);

/// A signature of GOST R 34.10 in a certificate: s and r, big-endian, of equal size (RFC 4491 2.2).
struct GostSignature {
    Botan::BigInt s;
    Botan::BigInt r;

    /// Nothing if the octets are not twice `size`, or one of the numbers is not from 1 to `order`
    /// - 1.
    [[nodiscard]] static std::optional<GostSignature> read(Octets octets, std::size_t size,
                                                           const Botan::BigInt& order);
};

} // namespace norvane
