#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"
#include "asn1/Tag.h"

#include <cstdint>

namespace norvane {

/// The identifier and length octets of an element in any form that BER has (X.690 8.1.2, 8.1.3).
struct BerHeader {
    ByteView tag;             ///< Identifier octets.
    std::uint32_t length = 0; ///< Of the content; 0 if indefinite.
    bool indefinite = false;
    const std::uint8_t* content = nullptr;

    [[nodiscard]] bool constructed() const { return (*tag.data & constructed_bit) != 0; }
};

/// Reads the header at `at`, in `input`, of an element that must end at `end` or before. False with
/// the reason in `failure` if there is none, its length leads past `end`, or an indefinite length
/// stands on a primitive element.
[[nodiscard]] bool read_ber_header(ByteView input, const std::uint8_t* at, const std::uint8_t* end,
                                   BerHeader& header, ASN1Failure& failure);

} // namespace norvane
