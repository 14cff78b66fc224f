#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/ByteView.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// An INTEGER of any size as it was decoded: a view of its content octets (two's complement, most
/// significant first, at least one). Its text is "0x" and the octets in lower-case hexadecimal, or
/// "-0x" and the magnitude in as many digits for a negative one; every encoded value thus has
/// exactly one text, and comparing octets is comparing texts.
class ASN1TInteger {
  public:
    ASN1TInteger() = default;
    explicit ASN1TInteger(ByteView content) : content_(content) {}

    [[nodiscard]] ByteView content() const { return content_; }
    [[nodiscard]] std::string text() const;

    /// The value if it fits 32 bits with its sign.
    [[nodiscard]] std::optional<std::int32_t> to_int32() const;

    /// A value that is not negative as 32 bits without sign, 0xFFFFFFFF for any that needs more.
    /// Nothing for a negative value.
    [[nodiscard]] std::optional<std::uint32_t> to_uint32_saturated() const;

    /// The content octets whose text is `text`; nothing if no encoded value has that text.
    [[nodiscard]] static std::optional<std::vector<std::uint8_t>> parse(std::string_view text);

  private:
    ByteView content_;
};

/// A whole number of any size as sign and magnitude.
struct ASN1BigInt {
    bool negative = false;
    std::vector<std::uint8_t>
        magnitude; ///< Most significant first, without leading zeros but for 0.
};

/// Makes `value` zero.
void rtBigIntInit(ASN1BigInt& value);

/// Reads a number from its text: an optional sign, then digits in the given radix. Radix 0 goes by
/// the prefix, "0x" for 16, "0" for 8, and 10 otherwise. Returns 0, or a negative status with the
/// failure in `ctxt`. The time is linear in the length for radix 16, quadratic for the others.
[[nodiscard]] int rtBigIntSetStr(ASN1CTXT& ctxt, ASN1BigInt& value, std::string_view text,
                                 int radix);

} // namespace norvane
