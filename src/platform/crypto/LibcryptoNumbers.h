#pragma once

#include "asn1/Integer.h"
#include "platform/crypto/Libcrypto.h"
#include "platform/crypto/Provider.h"

#include <optional>

namespace norvane {

// Keys and signatures are taken apart here and verified with the numbers and points of libcrypto.
// Its own verifiers answer "bad" and "failed" in ways that cannot be told apart: some of them call
// a signature bad when there is no memory, and others fail over numbers that somebody chose for it.
// Of a calculation on numbers whose form and range have been checked every failure is one of the
// process.
//
// All of these throw LibcryptoError or std::bad_alloc.

[[nodiscard]] BigNumber new_number();
[[nodiscard]] NumberContext new_number_context();
/// For a modulus that is odd.
[[nodiscard]] MontgomeryContext new_montgomery_context(const BIGNUM* modulus, BN_CTX* context);

/// A number from its octets, the most significant first.
[[nodiscard]] BigNumber number_of(Octets octets);
/// The magnitude of an INTEGER; null if it is negative.
[[nodiscard]] BigNumber number_of(const ASN1TInteger& integer);

[[nodiscard]] bool has_bits(const BIGNUM* number, int min, int max);

/// A signature of DSA or ECDSA: SEQUENCE { r INTEGER, s INTEGER } (RFC 3279 2.2.2, 2.2.3).
struct SignaturePair {
    BigNumber r;
    BigNumber s;

    /// Nothing if the octets are not that in DER, or one of the numbers is not from 1 to `order`
    /// - 1.
    [[nodiscard]] static std::optional<SignaturePair> read(Octets octets, const BIGNUM* order);
};

/// The first bits of a digest as a number, as many as the order has (FIPS 186-4 4.6, 6.4).
[[nodiscard]] BigNumber number_of_digest(Octets digest, const BIGNUM* order);

/// What a signature is compared with: u1 = e/s and u2 = r/s modulo the order.
struct VerificationFactors {
    BigNumber u1;
    BigNumber u2;

    VerificationFactors(const SignaturePair& signature, Octets digest, const BIGNUM* inverse_of_s,
                        const BIGNUM* order, BN_CTX* context);
};

} // namespace norvane
