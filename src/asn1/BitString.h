#pragma once

#include "asn1/ByteView.h"

#include <cstdint>

namespace norvane {

/// A BIT STRING as it was decoded: a view of its octets without the leading count of unused bits.
/// Bit 0 is the most significant bit of the first octet (X.690 8.6.2). The unused bits of the last
/// octet are no part of the value and may hold anything.
struct ASN1TBitStr {
    std::uint32_t numbits = 0;
    const std::uint8_t* data = nullptr;

    [[nodiscard]] ByteView octets() const { return {data, (numbits + 7) / 8}; }

    /// The first eight bits, those that the string does not have being 0.
    [[nodiscard]] std::uint8_t first_octet() const {
        if (numbits == 0) {
            return 0;
        }
        const unsigned unused = numbits < 8 ? 8 - numbits : 0;
        return static_cast<std::uint8_t>(data[0] >> unused << unused);
    }
};

/// Reads the named bits of a BIT STRING.
class ASN1CBitStr {
  public:
    explicit ASN1CBitStr(const ASN1TBitStr& bits) : bits_(bits) {}

    /// Whether bit `index` is set. A bit behind the end is not (X.690 11.2.2 lets an encoder drop
    /// trailing zeros of named bits).
    [[nodiscard]] bool get(std::uint32_t index) const {
        return index < bits_.numbits && (bits_.data[index / 8] & 0x80U >> index % 8) != 0;
    }

  private:
    ASN1TBitStr bits_;
};

} // namespace norvane
