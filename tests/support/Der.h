// Bytes of ASN.1 for tests, written by hand on purpose: what the tests read must not come from the
// code under test. Malformed arguments throw one of std::logic_error.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace norvane::testing {

using Bytes = std::vector<std::uint8_t>;

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
[[nodiscard]] inline Bytes text_bytes(std::string_view text) { return {text.begin(), text.end()}; }

// One element with a tag of one octet and the shortest definite length.
[[nodiscard]] Bytes tlv(int tag, const Bytes& content);
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
[[nodiscard]] Bytes context(int number, const Parts&... parts) {
    return tlv(0xa0 | number, cat(parts...));
}
[[nodiscard]] inline Bytes context_primitive(int number, const Bytes& content) {
    return tlv(0x80 | number, content);
}

// The content of an INTEGER: two's complement, as short as can be.
[[nodiscard]] Bytes integer_content(long long value);
[[nodiscard]] inline Bytes integer_octets(const Bytes& content) { return tlv(0x02, content); }
[[nodiscard]] inline Bytes integer(long long value) { return tlv(0x02, integer_content(value)); }
[[nodiscard]] inline Bytes enumerated(long long value) { return tlv(0x0a, integer_content(value)); }
[[nodiscard]] inline Bytes boolean(bool value) { return hex(value ? "0101ff" : "010100"); }
[[nodiscard]] inline Bytes null() { return {0x05, 0x00}; }
[[nodiscard]] inline Bytes octet_string(const Bytes& content) { return tlv(0x04, content); }
// Dotted decimal; each arc fits 64 bits, and so does 80 plus the second one.
[[nodiscard]] Bytes oid(std::string_view dotted);
[[nodiscard]] inline Bytes utf8(std::string_view text) { return tlv(0x0c, text_bytes(text)); }
[[nodiscard]] inline Bytes printable(std::string_view text) { return tlv(0x13, text_bytes(text)); }
[[nodiscard]] inline Bytes teletex(std::string_view text) { return tlv(0x14, text_bytes(text)); }
[[nodiscard]] inline Bytes ia5(std::string_view text) { return tlv(0x16, text_bytes(text)); }
[[nodiscard]] Bytes bmp(std::u16string_view text);
// "260101000000Z" and "20260101000000Z".
[[nodiscard]] inline Bytes utc_time(std::string_view text) { return tlv(0x17, text_bytes(text)); }
[[nodiscard]] inline Bytes generalized_time(std::string_view text) {
    return tlv(0x18, text_bytes(text));
}

// What a BIT STRING holds: octets, and how many bits of the last one are padding (0 to 7).
struct Bits {
    Bytes octets = {};
    std::uint8_t unused = 0;
    [[nodiscard]] Bytes content() const { return cat(Bytes{unused}, octets); }
};
[[nodiscard]] inline Bytes bit_string(const Bytes& octets, std::uint8_t unused = 0) {
    return tlv(0x03, Bits{octets, unused}.content());
}
// The bits with the given numbers (0 is the most significant), without trailing zero bits.
[[nodiscard]] Bits named_bits(const std::vector<unsigned>& numbers);

// BER that is not DER.
// A length in the long form with exactly `octets` octets, enough for it and at most 126.
[[nodiscard]] Bytes ber_long_length(int tag, const Bytes& content, std::uint8_t octets);
// The content must be whole elements, the tag a constructed one.
[[nodiscard]] Bytes ber_indefinite(int tag, const Bytes& content);
// A string in constructed form. `tag` is the primitive one; the segments are whole elements, OCTET
// STRINGs for every type but BIT STRING (X.690, 8.6 and 8.21).
[[nodiscard]] inline Bytes ber_segments(int tag, const std::vector<Bytes>& segments) {
    return tlv(tag | 0x20, cat(segments));
}
// The same elements, every constructed one with an indefinite length; primitive ones are kept.
// Tags must be of one octet.
[[nodiscard]] Bytes to_indefinite(const Bytes& der);

} // namespace norvane::testing
