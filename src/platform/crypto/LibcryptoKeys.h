#pragma once

#include "platform/crypto/Provider.h"

#include <openssl/types.h>

namespace norvane {

// Each of these gives null for bytes that are no key of its algorithm, or one outside the limits.
// Throws LibcryptoError or std::bad_alloc.

// Weaker keys are no proof of anything; longer ones are there to keep the verifier busy.
inline constexpr int min_rsa_bits = 1024;
inline constexpr int max_rsa_bits = 16384;
// The cost grows with the exponent; the platform's keys have 32 bits.
inline constexpr int max_rsa_exponent_bits = 64;
inline constexpr int min_dsa_bits = 1024;
inline constexpr int max_dsa_bits = 4096;

/// RFC 3279 2.3.1, for PKCS #1 v1.5 (RFC 8017 8.2) with the hashes of the SHA family.
[[nodiscard]] std::shared_ptr<const PublicKey> import_rsa_key(Octets parameters, Octets key);
/// RFC 3279 2.3.2. Parameters that are left out, to be those of the issuer, are not taken.
[[nodiscard]] std::shared_ptr<const PublicKey> import_dsa_key(Octets parameters, Octets key);
/// RFC 5480 2.1.1 and 2.2. Curves are taken by their names only, and those that this build of
/// libcrypto has.
///
/// @param library outlives the key.
[[nodiscard]] std::shared_ptr<const PublicKey> import_ecdsa_key(OSSL_LIB_CTX* library,
                                                                Octets parameters, Octets key);

/// Whether signatures are verified over digests of this hash.
[[nodiscard]] bool is_sha_hash(ALG_ID hash) noexcept;

} // namespace norvane
