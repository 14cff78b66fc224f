#include "support/Der.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>
#include <utility>

#include <openssl/asn1.h>

namespace norvane::testing {
namespace {

std::uint8_t low_octet(auto value) { return static_cast<std::uint8_t>(value & 0xff); }

void append_indefinite(Bytes& out, const Bytes& der, std::size_t at, std::size_t end) {
    while (at < end) {
        const std::size_t start = at;
        const std::uint8_t tag = der.at(at++);
        std::size_t length = der.at(at++);
        if (length >= 0x80)
            for (std::size_t octets = std::exchange(length, 0) - 0x80; octets > 0; --octets)
                length = length << 8 | der.at(at++);
        if (at > end || length > end - at)
            throw std::invalid_argument("DER: an element reaches past the end");
        if ((tag & 0x20) != 0) {
            append(out, Bytes{tag, 0x80});
            append_indefinite(out, der, at, at + length);
            append(out, Bytes{0, 0});
        } else {
            out.insert(out.end(), &der[start], der.data() + at + length);
        }
        at += length;
    }
}

} // namespace

// Kept out of line: inlined behind a short list, GCC 12 takes vector::insert for an overflow.
[[gnu::noinline]] void append(Bytes& out, const Bytes& part) {
    out.insert(out.end(), part.begin(), part.end());
}
void append(Bytes& out, const std::vector<Bytes>& parts) {
    for (const Bytes& part : parts)
        append(out, part);
}

Bytes hex(std::string_view digits) {
    std::string packed(digits);
    std::erase(packed, ' ');
    Bytes out;
    for (const char* at = packed.data(); *at != 0; at += 2) // the NUL behind an odd digit is none
        if (std::from_chars(at, at + 2, out.emplace_back(), 16).ptr != at + 2)
            throw std::invalid_argument("not hexadecimal: " + packed);
    return out;
}

Bytes tlv(int tag, const Bytes& content) {
    if (content.size() < 0x80)
        return cat(Bytes{low_octet(tag), low_octet(content.size())}, content);
    std::uint8_t octets = 1;
    while (content.size() >> 8 * octets != 0)
        ++octets;
    return ber_long_length(tag, content, octets);
}

Bytes integer_content(long long value) {
    Bytes octets;
    do {
        octets.insert(octets.begin(), low_octet(value));
        value >>= 8;
    } while (value != (octets.front() >= 0x80 ? -1 : 0));
    return octets;
}

Bytes oid(std::string_view dotted) {
    const std::string text(dotted);
    Bytes content(text.size()); // No arc takes more octets than digits.
    const int size =
        a2d_ASN1_OBJECT(content.data(), static_cast<int>(content.size()), text.c_str(), -1);
    if (size <= 0)
        throw std::invalid_argument("not an object identifier: " + text);
    content.resize(static_cast<std::size_t>(size));
    return tlv(0x06, content);
}

Bytes bmp(std::u16string_view text) {
    Bytes content;
    for (const char16_t unit : text)
        append(content, Bytes{low_octet(unit >> 8), low_octet(unit)});
    return tlv(0x1e, content);
}

Bits named_bits(const std::vector<unsigned>& numbers) {
    Bits bits;
    for (const unsigned number : numbers) {
        bits.octets.resize(std::max<std::size_t>(bits.octets.size(), number / 8 + 1));
        bits.octets[number / 8] |= low_octet(0x80U >> number % 8);
    }
    if (!numbers.empty())
        bits.unused = low_octet(7 - *std::ranges::max_element(numbers) % 8);
    return bits;
}

Bytes ber_long_length(int tag, const Bytes& content, std::uint8_t octets) {
    Bytes header{low_octet(tag), low_octet(0x80 | octets)};
    for (unsigned left = octets; left > 0; --left)
        header.push_back(left > 8 ? 0 : low_octet(content.size() >> 8 * (left - 1)));
    return cat(header, content);
}

Bytes ber_indefinite(int tag, const Bytes& content) {
    return cat(Bytes{low_octet(tag), 0x80}, content, Bytes{0, 0});
}

Bytes to_indefinite(const Bytes& der) {
    Bytes out;
    append_indefinite(out, der, 0, der.size());
    return out;
}

} // namespace norvane::testing
