#include "platform/store/Pem.h"

#include <array>

namespace norvane {
namespace {

constexpr std::string_view begin_mark = "-----BEGIN ";
constexpr std::string_view end_mark = "-----END ";
constexpr std::string_view close_mark = "-----";
constexpr std::string_view white_space = " \t\r\n\v\f";

constexpr std::uint8_t no_digit = 0xff;
constexpr char padding = '=';
constexpr unsigned bits_per_digit = 6;
constexpr unsigned digits_per_group = 4;

constexpr std::array<std::uint8_t, 256> digit_values = [] {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> values{};
    values.fill(no_digit);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        values[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}();

/// The label of a boundary line that begins with `mark`; nothing if it is no such line.
std::optional<std::string_view> label_of(std::string_view line, std::string_view mark) {
    line = line.substr(0, line.find_last_not_of(white_space) + 1);
    if (!line.starts_with(mark) || !line.ends_with(close_mark) ||
        line.size() < mark.size() + close_mark.size()) {
        return std::nullopt;
    }
    line.remove_prefix(mark.size());
    line.remove_suffix(close_mark.size());
    return line;
}

} // namespace

std::string_view PemReader::take_line() {
    const std::size_t end = rest_.find('\n');
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end == rest_.npos ? rest_.size() : end + 1);
    return line;
}

std::variant<std::optional<PemReader::Block>, std::string> PemReader::next() {
    std::optional<std::string_view> label;
    while (!label && !rest_.empty()) {
        label = label_of(take_line(), begin_mark);
    }
    if (!label) {
        return std::nullopt;
    }
    const char* const body = rest_.data();
    while (!rest_.empty()) {
        const char* const line_start = rest_.data();
        const std::string_view line = take_line();
        if (const auto end = label_of(line, end_mark)) {
            if (*end != *label) {
                return "a PEM block begins as " + std::string(*label) + " and ends as " +
                       std::string(*end);
            }
            return Block{*label, {body, static_cast<std::size_t>(line_start - body)}};
        }
        if (label_of(line, begin_mark)) {
            break;
        }
    }
    return "a PEM block " + std::string(*label) + " has no end";
}

std::optional<std::vector<std::uint8_t>> decode_pem_body(std::string_view body) {
    constexpr unsigned bits_per_octet = 8;
    std::vector<std::uint8_t> octets;
    octets.reserve(body.size() / digits_per_group * 3);
    std::uint32_t bits = 0;
    unsigned bit_count = 0;
    std::size_t digits = 0;
    std::size_t paddings = 0;
    for (const char c : body) {
        if (white_space.find(c) != white_space.npos) {
            continue;
        }
        if (c == padding) {
            ++paddings;
            continue;
        }
        const std::uint8_t value = digit_values[static_cast<unsigned char>(c)];
        if (value == no_digit || paddings != 0) {
            return std::nullopt;
        }
        ++digits;
        bits = bits << bits_per_digit | value;
        bit_count += bits_per_digit;
        if (bit_count >= bits_per_octet) {
            bit_count -= bits_per_octet;
            octets.push_back(static_cast<std::uint8_t>(bits >> bit_count));
        }
    }
    const bool whole = (digits + paddings) % digits_per_group == 0 && paddings <= 2;
    return whole ? std::optional(std::move(octets)) : std::nullopt;
}

} // namespace norvane
