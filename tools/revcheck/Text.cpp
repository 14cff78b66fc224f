#include "Text.h"

#include "asn1/Integer.h"
#include "values/Exceptions.h"
#include "values/NameText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <vector>

namespace norvane {
namespace {

constexpr std::string_view digits_of_16 = "0123456789abcdef";

struct CodePoint {
    char32_t value;
    std::size_t length; ///< in bytes; 0 if there is no UTF-8 here
};

CodePoint first_code_point(std::string_view text) {
    struct Form {
        unsigned mask;
        unsigned lead;
        char32_t least;
    };
    constexpr std::array<Form, 4> forms{
        {{0x80, 0x00, 0}, {0xe0, 0xc0, 0x80}, {0xf0, 0xe0, 0x800}, {0xf8, 0xf0, 0x10000}}};
    const auto octet = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (std::size_t length = 1; length <= forms.size(); ++length) {
        const Form& form = forms.at(length - 1);
        if ((octet(0) & form.mask) != form.lead || text.size() < length) {
            continue;
        }
        char32_t value = octet(0) & ~form.mask;
        for (std::size_t i = 1; i < length; ++i) {
            if ((octet(i) & 0xc0U) != 0x80U) {
                return {0, 0};
            }
            value = value << 6U | (octet(i) & 0x3fU);
        }
        const bool surrogate = (value & ~char32_t{0x7ff}) == 0xd800;
        if (value < form.least || value > 0x10ffff || surrogate) {
            return {0, 0};
        }
        return {value, length};
    }
    return {0, 0};
}

struct CodeRange {
    char32_t first;
    char32_t last;
};

/// What shows nothing and yet changes what is seen around it: control characters, ends of lines and
/// the Default_Ignorable_Code_Point of Unicode, to which zero widths, turns of the direction of
/// writing, fillers, variation selectors and tags belong, and beside them the annotations and what
/// XML does not allow as a character.
constexpr CodeRange invisible[] = {
    {0x00, 0x1f},     {0x7f, 0x9f},     {0xad, 0xad},       {0x034f, 0x034f},   {0x061c, 0x061c},
    {0x115f, 0x1160}, {0x17b4, 0x17b5}, {0x180b, 0x180f},   {0x200b, 0x200f},   {0x2028, 0x202e},
    {0x2060, 0x206f}, {0x3164, 0x3164}, {0xfe00, 0xfe0f},   {0xfeff, 0xfeff},   {0xffa0, 0xffa0},
    {0xfff0, 0xfffb}, {0xfffe, 0xffff}, {0x1bca0, 0x1bca3}, {0x1d173, 0x1d17a}, {0xe0000, 0xe0fff},
};

bool is_safe(char32_t c) {
    return std::ranges::none_of(
        invisible, [c](const CodeRange& range) { return range.first <= c && c <= range.last; });
}

void append_octet(std::string& text, unsigned octet) {
    text += digits_of_16[octet >> 4U & 0xfU];
    text += digits_of_16[octet & 0xfU];
}

/// UTF-8 from the platform's 16-bit units; an unpaired surrogate becomes U+FFFD.
std::string to_utf8(const WideString& wide) {
    constexpr char32_t replacement = 0xfffd;
    const auto is_unit_of = [](WCHAR unit, char32_t first) {
        return (static_cast<char32_t>(unit) & 0xfc00U) == first;
    };
    std::string text;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t c = wide[i];
        if (is_unit_of(wide[i], 0xd800) && i + 1 < wide.size() && is_unit_of(wide[i + 1], 0xdc00)) {
            c = 0x10000 + ((c & 0x3ffU) << 10) + (static_cast<char32_t>(wide[++i]) & 0x3ffU);
        } else if ((c & 0xf800U) == 0xd800) {
            c = replacement;
        }
        const int trailing = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr unsigned lead[] = {0x00, 0xc0, 0xe0, 0xf0};
        text += static_cast<char>(lead[trailing] | c >> 6 * trailing);
        for (int left = trailing - 1; left >= 0; --left) {
            text += static_cast<char>(0x80U | (c >> 6 * left & 0x3fU));
        }
    }
    return text;
}

} // namespace

std::string printable(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const CodePoint next = first_code_point(text);
        const std::size_t taken = next.length == 0 ? 1 : next.length;
        if (next.length != 0 && is_safe(next.value)) {
            result += text.substr(0, taken);
        } else if (taken == 1) {
            result += "\\x";
            append_octet(result, static_cast<unsigned char>(text.front()));
        } else {
            result += "\\u{";
            if (next.value > 0xffff) {
                append_octet(result, static_cast<unsigned>(next.value >> 16U));
            }
            append_octet(result, static_cast<unsigned>(next.value >> 8U));
            append_octet(result, static_cast<unsigned>(next.value));
            result += '}';
        }
        text.remove_prefix(taken);
    }
    return result;
}

std::string name_text(const CERT_NAME_BLOB& name) {
    try {
        return to_utf8(name_blob_to_text({name.pbData, name.cbData}));
    } catch (const CAException&) {
        return "#" + hexadecimal_text(name.pbData, name.cbData);
    }
}

std::string hexadecimal_text(const BYTE* octets, std::size_t count) {
    std::string text;
    std::for_each_n(octets, count, [&](BYTE octet) { append_octet(text, octet); });
    return text;
}

std::string serial_text(const CRYPT_INTEGER_BLOB& serial) {
    std::vector<std::uint8_t> octets(std::make_reverse_iterator(serial.pbData + serial.cbData),
                                     std::make_reverse_iterator(serial.pbData));
    const auto last = octets.empty() ? octets.end() : octets.end() - 1;
    octets.erase(octets.begin(),
                 std::find_if(octets.begin(), last, [](std::uint8_t octet) { return octet != 0; }));
    const bool had_sign_octet = octets.size() < serial.cbData;
    if (had_sign_octet) {
        return "0x" + hexadecimal_text(octets.data(), octets.size());
    }
    return ASN1TInteger({octets.data(), static_cast<std::uint32_t>(octets.size())}).text();
}

std::string decimal_text(const BYTE* octets, std::size_t count) {
    constexpr unsigned base = 10;
    std::vector<std::uint8_t> rest(octets, octets + count);
    const bool negative = count != 0 && (octets[0] & 0x80U) != 0;
    if (negative) {
        unsigned carry = 1;
        for (auto place = rest.rbegin(); place != rest.rend(); ++place) {
            const unsigned sum = (~unsigned{*place} & 0xffU) + carry;
            *place = static_cast<std::uint8_t>(sum);
            carry = sum >> 8U;
        }
    }
    std::string digits;
    do {
        unsigned remainder = 0;
        for (std::uint8_t& octet : rest) {
            const unsigned dividend = remainder << 8U | octet;
            octet = static_cast<std::uint8_t>(dividend / base);
            remainder = dividend % base;
        }
        digits += static_cast<char>('0' + remainder);
    } while (std::ranges::any_of(rest, [](std::uint8_t octet) { return octet != 0; }));
    digits += negative ? "-" : "";
    std::ranges::reverse(digits);
    return digits;
}

} // namespace norvane
