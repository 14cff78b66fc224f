#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"
#include "asn1/Tag.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace norvane {

/// Octets that a definite, minimal length takes.
[[nodiscard]] constexpr std::uint32_t length_octets(std::uint32_t length) {
    if (length < 0x80) {
        return 1;
    }
    std::uint32_t count = 2;
    while (length > 0xff) {
        length >>= 8;
        ++count;
    }
    return count;
}

/// Writes `length` in definite, minimal form to `out`. Returns where the next octet goes.
std::uint8_t* write_length(std::uint8_t* out, std::uint32_t length);

/// The identifier and length octets of an element in any form that BER has (X.690 8.1.2, 8.1.3).
struct BerHeader {
    ByteView tag;             ///< Identifier octets.
    std::uint32_t length = 0; ///< Of the content; 0 if indefinite.
    bool indefinite = false;
    const std::uint8_t* content = nullptr;

    [[nodiscard]] bool constructed() const { return (*tag.data & constructed_bit) != 0; }
    /// Whether the length has the form that DER requires (X.690 10.1).
    [[nodiscard]] bool minimal() const {
        return !indefinite && content - tag.end() == std::ptrdiff_t{length_octets(length)};
    }
};

/// Reads the header at `at`, in `input`, of an element that must end at `end` or before. False with
/// the reason in `failure` if there is none, its length leads past `end`, or an indefinite length
/// stands on a primitive element.
[[nodiscard]] bool read_ber_header(ByteView input, const std::uint8_t* at, const std::uint8_t* end,
                                   BerHeader& header, ASN1Failure& failure);

/// What went wrong at `at`, in `input`, where no field name is known.
[[nodiscard]] ASN1Failure ber_failure(ASN1Status status, ByteView input, const std::uint8_t* at,
                                      std::string expected, std::string found);

} // namespace norvane
