#include "support/Der.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <stdexcept>

namespace norvane::testing {
namespace {

constexpr std::uint8_t constructed = 0x20;

std::uint8_t low_octet(std::uint64_t value) { return static_cast<std::uint8_t>(value & 0xff); }

// The octets of a length, big-endian; `count` 0 asks for as few as will do.
Bytes length_octets(std::uint64_t length, std::size_t count) {
    Bytes octets;
    while (length != 0 || octets.size() < count) {
        octets.insert(octets.begin(), low_octet(length));
        length >>= 8;
    }
    return octets;
}

Bytes header(std::uint8_t tag, std::size_t length) {
    if (length < 0x80)
        return {tag, low_octet(length)};
    const Bytes octets = length_octets(length, 0);
    return cat(Bytes{tag, low_octet(0x80 | octets.size())}, octets);
}

void append_arc(Bytes& out, std::uint64_t arc) {
    unsigned shift = 63;
    while (shift > 0 && (arc >> shift) == 0)
        shift -= 7;
    for (; shift > 0; shift -= 7)
        out.push_back(low_octet(0x80 | ((arc >> shift) & 0x7f)));
    out.push_back(low_octet(arc & 0x7f));
}

Bytes two_complement(long long value) {
    Bytes octets;
    do {
        octets.insert(octets.begin(), low_octet(static_cast<std::uint64_t>(value)));
        value >>= 8;
    } while (value != ((octets.front() & 0x80) != 0 ? -1 : 0));
    return octets;
}

std::uint8_t take(std::span<const std::uint8_t>& rest) {
    if (rest.empty())
        throw std::invalid_argument("DER: an element is cut short");
    const std::uint8_t octet = rest.front();
    rest = rest.subspan(1);
    return octet;
}

std::span<const std::uint8_t> take_content(std::span<const std::uint8_t>& rest) {
    std::size_t length = take(rest);
    if (length >= 0x80) {
        std::size_t octets = length - 0x80;
        for (length = 0; octets > 0; --octets)
            length = length << 8 | take(rest);
    }
    if (length > rest.size())
        throw std::invalid_argument("DER: a length reaches past the end");
    const auto content = rest.first(length);
    rest = rest.subspan(length);
    return content;
}

void append_indefinite(Bytes& out, std::span<const std::uint8_t> rest) {
    while (!rest.empty()) {
        const auto start = rest;
        const std::uint8_t tag = take(rest);
        if ((tag & 0x1f) == 0x1f) {
            while ((take(rest) & 0x80) != 0) {
            }
        }
        const auto tag_octets = start.first(start.size() - rest.size());
        const auto content = take_content(rest);
        if ((tag & constructed) == 0) {
            out.insert(out.end(), start.begin(), start.end() - std::ssize(rest));
            continue;
        }
        out.insert(out.end(), tag_octets.begin(), tag_octets.end());
        out.push_back(0x80);
        append_indefinite(out, content);
        out.insert(out.end(), 2, 0);
    }
}

} // namespace

void append(Bytes& out, const Bytes& part) { out.insert(out.end(), part.begin(), part.end()); }
void append(Bytes& out, const std::vector<Bytes>& parts) {
    for (const Bytes& part : parts)
        append(out, part);
}

Bytes hex(std::string_view digits) {
    Bytes out;
    bool half = false;
    for (const char& digit : digits) {
        if (digit == ' ')
            continue;
        std::uint8_t value = 0;
        if (std::from_chars(&digit, &digit + 1, value, 16).ec != std::errc())
            throw std::invalid_argument("not hexadecimal: " + std::string(digits));
        if (half)
            out.back() = low_octet(out.back() * 16U + value);
        else
            out.push_back(value);
        half = !half;
    }
    if (half)
        throw std::invalid_argument("an odd number of digits: " + std::string(digits));
    return out;
}

Bytes text_bytes(std::string_view text) { return {text.begin(), text.end()}; }

Bytes tlv(std::uint8_t tag, const Bytes& content) {
    return cat(header(tag, content.size()), content);
}

Bytes context_primitive(std::uint8_t number, const Bytes& content) {
    return tlv(low_octet(0x80U | number), content);
}

Bytes boolean(bool value) { return {0x01, 0x01, low_octet(value ? 0xff : 0x00)}; }
Bytes integer(long long value) { return tlv(0x02, two_complement(value)); }
Bytes integer_octets(const Bytes& content) { return tlv(0x02, content); }
Bytes enumerated(long long value) { return tlv(0x0a, two_complement(value)); }
Bytes bit_string(const Bytes& octets, std::uint8_t unused) {
    return tlv(0x03, cat(Bytes{unused}, octets));
}
Bytes bit_string(const Bits& bits) { return bit_string(bits.octets, bits.unused); }
Bytes octet_string(const Bytes& content) { return tlv(0x04, content); }
Bytes null() { return {0x05, 0x00}; }

Bytes oid(std::string_view dotted) {
    std::vector<std::uint64_t> arcs;
    const char* at = dotted.data();
    const char* const end = at + dotted.size();
    for (;; ++at) {
        const auto [next, error] = std::from_chars(at, end, arcs.emplace_back());
        if (error != std::errc() || (next != end && *next != '.'))
            throw std::invalid_argument("not an object identifier: " + std::string(dotted));
        at = next;
        if (at == end)
            break;
    }
    if (arcs.size() < 2)
        throw std::invalid_argument("an object identifier of one arc: " + std::string(dotted));
    Bytes content;
    append_arc(content, arcs[0] * 40 + arcs[1]);
    for (const std::uint64_t arc : std::span(arcs).subspan(2))
        append_arc(content, arc);
    return tlv(0x06, content);
}

Bytes utf8(std::string_view text) { return tlv(0x0c, text_bytes(text)); }
Bytes printable(std::string_view text) { return tlv(0x13, text_bytes(text)); }
Bytes teletex(std::string_view text) { return tlv(0x14, text_bytes(text)); }
Bytes ia5(std::string_view text) { return tlv(0x16, text_bytes(text)); }
Bytes bmp(std::u16string_view text) {
    Bytes content;
    for (const char16_t unit : text) {
        content.push_back(low_octet(unit >> 8U));
        content.push_back(low_octet(unit));
    }
    return tlv(0x1e, content);
}
Bytes utc_time(std::string_view text) { return tlv(0x17, text_bytes(text)); }
Bytes generalized_time(std::string_view text) { return tlv(0x18, text_bytes(text)); }

Bits named_bits(const std::vector<unsigned>& numbers) {
    Bits bits;
    if (numbers.empty())
        return bits;
    const unsigned highest = *std::max_element(numbers.begin(), numbers.end());
    bits.octets.resize(highest / 8 + 1);
    bits.unused = low_octet(7 - highest % 8);
    for (const unsigned number : numbers)
        bits.octets[number / 8] |= low_octet(0x80U >> number % 8);
    return bits;
}

Bytes ber_long_length(std::uint8_t tag, const Bytes& content, std::uint8_t count) {
    const Bytes octets = length_octets(content.size(), count);
    if (octets.size() != count || count > 126)
        throw std::invalid_argument("the length does not fit that many octets");
    return cat(Bytes{tag, low_octet(0x80U | count)}, octets, content);
}

Bytes ber_indefinite(std::uint8_t tag, const Bytes& content) {
    return cat(Bytes{tag, 0x80}, content, Bytes{0, 0});
}

Bytes ber_segments(std::uint8_t tag, const std::vector<Bytes>& segments) {
    return tlv(tag | constructed, cat(segments));
}

Bytes to_indefinite(const Bytes& der) {
    Bytes out;
    append_indefinite(out, der);
    return out;
}

} // namespace norvane::testing
