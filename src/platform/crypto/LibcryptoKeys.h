#pragma once

#include "platform/crypto/Libcrypto.h"
#include "platform/crypto/Provider.h"

namespace norvane {

// Keys are made from their numbers. libcrypto's own decoders for SubjectPublicKeyInfo cost several
// verifications, and take more forms than are wanted here.
//
// Each of these gives null for bytes that are no key of its algorithm, or one outside the limits.
// Throws LibcryptoError or std::bad_alloc.

// Weaker keys are no proof of anything; longer ones are there to keep the verifier busy, and
// libcrypto refuses them too.
inline constexpr int min_rsa_bits = 1024;
inline constexpr int max_rsa_bits = 16384;
// libcrypto's own limit for long moduli. The cost grows with the exponent; the platform's keys
// have 32 bits.
inline constexpr int max_rsa_exponent_bits = 64;
inline constexpr int min_dsa_bits = 1024;
inline constexpr int max_dsa_bits = 4096;

/// RFC 3279 2.3.1.
[[nodiscard]] KeyPointer make_rsa_key(OSSL_LIB_CTX* library, Octets parameters, Octets key);
/// RFC 3279 2.3.2. Parameters that are left out, to be those of the issuer, are not taken.
[[nodiscard]] KeyPointer make_dsa_key(OSSL_LIB_CTX* library, Octets parameters, Octets key);
/// RFC 5480 2.1.1 and 2.2. Curves are taken by their names only.
[[nodiscard]] KeyPointer make_ec_key(OSSL_LIB_CTX* library, Octets parameters, Octets key);

} // namespace norvane
