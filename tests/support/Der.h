// Bytes of ASN.1 for tests, written by hand on purpose: what the tests read must not come from the
// code under test. Malformed arguments throw std::invalid_argument.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace norvane::testing {

using Bytes = std::vector<std::uint8_t>;

// The values of a BIT STRING: its octets, and how many bits of the last one are padding (0 to 7).
struct Bits {
    Bytes octets = {};
    std::uint8_t unused = 0;
};

void append(Bytes& out, const Bytes& part);
void append(Bytes& out, const std::vector<Bytes>& parts);

// Joins its arguments, each a Bytes or a vector of them.
template <typename... Parts>
[[nodiscard]] Bytes cat(const Parts&... parts) {
    Bytes out;
    (append(out, parts), ...);
    return out;
}

// "30 03 02 01 05"; spaces may stand anywhere.
[[nodiscard]] Bytes hex(std::string_view digits);
[[nodiscard]] Bytes text_bytes(std::string_view text);

// One element with a tag of one octet and the shortest definite length.
[[nodiscard]] Bytes tlv(std::uint8_t tag, const Bytes& content);

template <typename... Parts>
[[nodiscard]] Bytes sequence(const Parts&... parts) {
    return tlv(0x30, cat(parts...));
}
// The members stand in the given order, sorted or not.
template <typename... Parts>
[[nodiscard]] Bytes set(const Parts&... parts) {
    return tlv(0x31, cat(parts...));
}
// [number] constructed and [number] primitive, for numbers below 31.
template <typename... Parts>
[[nodiscard]] Bytes context(std::uint8_t number, const Parts&... parts) {
    return tlv(static_cast<std::uint8_t>(0xa0 | number), cat(parts...));
}
[[nodiscard]] Bytes context_primitive(std::uint8_t number, const Bytes& content);

[[nodiscard]] Bytes boolean(bool value);
[[nodiscard]] Bytes integer(long long value);
[[nodiscard]] Bytes integer_octets(const Bytes& content);
[[nodiscard]] Bytes enumerated(long long value);
[[nodiscard]] Bytes bit_string(const Bytes& octets, std::uint8_t unused = 0);
[[nodiscard]] Bytes bit_string(const Bits& bits);
[[nodiscard]] Bytes octet_string(const Bytes& content);
[[nodiscard]] Bytes null();
// Dotted decimal; each arc fits 64 bits, and so does 80 plus the second one.
[[nodiscard]] Bytes oid(std::string_view dotted);
[[nodiscard]] Bytes utf8(std::string_view text);
[[nodiscard]] Bytes printable(std::string_view text);
[[nodiscard]] Bytes teletex(std::string_view text);
[[nodiscard]] Bytes ia5(std::string_view text);
[[nodiscard]] Bytes bmp(std::u16string_view text);
[[nodiscard]] Bytes utc_time(std::string_view text);         // "260101000000Z"
[[nodiscard]] Bytes generalized_time(std::string_view text); // "20260101000000Z"

// The bits with the given numbers (0 is the most significant), without trailing zero bits.
[[nodiscard]] Bits named_bits(const std::vector<unsigned>& numbers);

// BER that is not DER.
// A length in the long form with exactly `length_octets` octets (1 to 126).
[[nodiscard]] Bytes ber_long_length(std::uint8_t tag, const Bytes& content,
                                    std::uint8_t length_octets);
// The content must be whole elements, the tag a constructed one.
[[nodiscard]] Bytes ber_indefinite(std::uint8_t tag, const Bytes& content);
// A string in constructed form. `tag` is the primitive one; the segments are whole elements, OCTET
// STRINGs for every type but BIT STRING (X.690, 8.6 and 8.21).
[[nodiscard]] Bytes ber_segments(std::uint8_t tag, const std::vector<Bytes>& segments);
// The same elements, every constructed one with an indefinite length; primitive ones are kept.
[[nodiscard]] Bytes to_indefinite(const Bytes& der);

} // namespace norvane::testing
