#include "asn1/Integer.h"

#include <algorithm>
#include <limits>

namespace norvane {
namespace {

constexpr char hex_digits[] = "0123456789abcdef";
constexpr std::uint8_t sign_bit = 0x80;
constexpr int no_digit = 36;

constexpr int digit_value(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'z') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'Z') {
        return c - 'A' + 10;
    }
    return no_digit;
}

bool is_negative(ByteView content) { return !content.empty() && (content.data[0] & sign_bit) != 0; }

/// Two's complement of the octets in place, most significant first.
template <class Octets>
void negate(Octets first, Octets last) {
    bool carry = true;
    while (last != first) {
        --last;
        const auto inverted = static_cast<std::uint8_t>(~static_cast<unsigned>(*last));
        *last = static_cast<std::uint8_t>(inverted + (carry ? 1 : 0));
        carry = carry && *last == 0;
    }
}

/// Multiplies the magnitude by `radix` and adds `digit`.
void append_digit(std::vector<std::uint8_t>& magnitude, unsigned radix, unsigned digit) {
    unsigned carry = digit;
    std::for_each(magnitude.rbegin(), magnitude.rend(), [&carry, radix](std::uint8_t& octet) {
        const unsigned product = octet * radix + carry;
        octet = static_cast<std::uint8_t>(product);
        carry = product >> 8;
    });
    if (carry != 0) {
        magnitude.insert(magnitude.begin(), static_cast<std::uint8_t>(carry));
    }
}

std::vector<std::uint8_t> magnitude_of_hex(std::string_view digits) {
    std::vector<std::uint8_t> octets((digits.size() + 1) / 2);
    std::size_t position = digits.size() % 2; // An odd count leaves the first octet half full.
    for (const char c : digits) {
        std::uint8_t& octet = octets[position++ / 2];
        octet = static_cast<std::uint8_t>(octet << 4 | digit_value(c));
    }
    std::size_t zeros = 0;
    while (zeros + 1 < octets.size() && octets[zeros] == 0) {
        ++zeros;
    }
    octets.erase(octets.begin(), octets.begin() + static_cast<std::ptrdiff_t>(zeros));
    return octets;
}

} // namespace

std::string ASN1TInteger::text() const {
    std::vector<std::uint8_t> octets(content_.begin(), content_.end());
    const bool negative = is_negative(content_);
    if (negative) {
        negate(octets.begin(), octets.end());
    }
    std::string text = negative ? "-0x" : "0x";
    text.reserve(text.size() + 2 * octets.size());
    for (const std::uint8_t octet : octets) {
        text += hex_digits[octet >> 4];
        text += hex_digits[octet & 0x0f];
    }
    return text;
}

std::optional<std::int32_t> ASN1TInteger::to_int32() const {
    const std::uint8_t fill = is_negative(content_) ? 0xff : 0x00;
    std::uint32_t value = fill == 0 ? 0 : std::numeric_limits<std::uint32_t>::max();
    for (std::uint32_t i = 0; i < content_.length; ++i) {
        const bool beyond_32_bits = content_.length - i > sizeof value;
        if (beyond_32_bits && content_.data[i] != fill) {
            return std::nullopt;
        }
        value = value << 8 | content_.data[i];
    }
    const auto result = static_cast<std::int32_t>(value);
    if (content_.empty() || (result < 0) != is_negative(content_)) {
        return std::nullopt;
    }
    return result;
}

std::optional<std::uint32_t> ASN1TInteger::to_uint32_saturated() const {
    if (content_.empty() || is_negative(content_)) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    for (const std::uint8_t octet : content_) {
        if (value >> 24 != 0) {
            return std::numeric_limits<std::uint32_t>::max();
        }
        value = value << 8 | octet;
    }
    return value;
}

std::optional<std::vector<std::uint8_t>> ASN1TInteger::parse(std::string_view text) {
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    if (!text.starts_with("0x") || text.size() == 2 || text.size() % 2 != 0) {
        return std::nullopt;
    }
    text.remove_prefix(2);
    std::vector<std::uint8_t> octets;
    octets.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const auto high = std::string_view(hex_digits).find(text[i]);
        const auto low = std::string_view(hex_digits).find(text[i + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos) {
            return std::nullopt;
        }
        octets.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    if (negative) {
        negate(octets.begin(), octets.end());
    }
    const bool reads_back_negative = (octets.front() & sign_bit) != 0;
    if (reads_back_negative != negative) {
        return std::nullopt;
    }
    return octets;
}

void rtBigIntInit(ASN1BigInt& value) {
    value.negative = false;
    value.magnitude.assign(1, 0);
}

int rtBigIntSetStr(ASN1CTXT& ctxt, ASN1BigInt& value, std::string_view text, int radix) {
    const std::string_view whole = text;
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const bool has_hex_prefix = text.starts_with("0x") || text.starts_with("0X");
    if (has_hex_prefix && (radix == 0 || radix == 16)) {
        radix = 16;
        text.remove_prefix(2);
    } else if (radix == 0) {
        radix = text.size() > 1 && text.starts_with('0') ? 8 : 10;
    }
    const auto bad =
        std::find_if(text.begin(), text.end(), [radix](char c) { return digit_value(c) >= radix; });
    if (text.empty() || bad != text.end()) {
        return rtErrSetData(ctxt,
                            {.status = ASN1Status::bad_value,
                             .element = "integer text",
                             .offset = static_cast<std::uint32_t>(
                                 whole.size() - static_cast<std::size_t>(text.end() - bad)),
                             .expected = "a digit of radix " + std::to_string(radix),
                             .found = text.empty() ? "the end of the text" : quoted({&*bad, 1})});
    }
    rtBigIntInit(value);
    if (radix == 16) {
        value.magnitude = magnitude_of_hex(text);
    } else {
        for (const char c : text) {
            append_digit(value.magnitude, static_cast<unsigned>(radix),
                         static_cast<unsigned>(digit_value(c)));
        }
        if (value.magnitude.size() > 1 && value.magnitude.front() == 0) {
            value.magnitude.erase(value.magnitude.begin());
        }
    }
    const bool zero = value.magnitude.size() == 1 && value.magnitude.front() == 0;
    value.negative = negative && !zero;
    return code(ASN1Status::ok);
}

} // namespace norvane
