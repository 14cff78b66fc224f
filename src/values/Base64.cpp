#include "values/Base64.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <string_view>

#include <norvane/wincrypt.h>

namespace norvane {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char pad = '=';

constexpr std::size_t group_bytes = 3;
constexpr std::size_t group_digits = 4;
constexpr std::size_t line_bytes = 48;
constexpr std::size_t line_digits = line_bytes / group_bytes * group_digits;
// A line of encoded text has 64 characters; a decoder refuses this many.
constexpr std::size_t refused_line_length = 80;

bool succeed() {
    SetLastError(ERROR_SUCCESS);
    return true;
}

bool fail(DWORD error) {
    SetLastError(error);
    return false;
}

constexpr std::uint64_t encoded_size(std::uint64_t count) {
    const std::uint64_t rest = count % line_bytes;
    const std::uint64_t rest_groups = (rest + group_bytes - 1) / group_bytes;
    return count / line_bytes * (line_digits + 1) +
           (rest == 0 ? 0 : rest_groups * group_digits + 1);
}

// Writes the four characters of a group of one to three bytes.
char* encode_group(std::span<const std::uint8_t> bytes, char* text) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < group_bytes; ++i) {
        bits = bits << 8 | (i < bytes.size() ? bytes[i] : 0U);
    }
    for (std::size_t i = 0; i < group_digits; ++i) {
        *text++ = i <= bytes.size() ? alphabet[bits >> (18 - 6 * i) & 0x3F] : pad;
    }
    return text;
}

// What the decoding table holds besides the digits 0 to 63.
enum SymbolClass : std::uint8_t {
    space_class = 0xE0,
    line_feed_class = 0xF0,
    carriage_return_class = 0xF1,
    dash_class = 0xF2,
    invalid_class = 0xFF,
};

constexpr std::size_t character_mask = 0x7F;

constexpr auto decoding_table = [] {
    std::array<std::uint8_t, character_mask + 1> table{};
    table.fill(invalid_class);
    std::uint8_t digit = 0;
    for (const char character : alphabet) {
        table[static_cast<unsigned char>(character)] = digit++;
    }
    table[pad] = 0;
    table[' '] = space_class;
    table['\t'] = space_class;
    table['\n'] = line_feed_class;
    table['\r'] = carriage_return_class;
    table['-'] = dash_class;
    return table;
}();

// Takes the text byte by byte. Digits wait in a pending group of up to one full line, which is
// flushed to the output at "-", when it is full, and at the end of the text. All operations that
// return a boolean give false for bad text.
class Base64Decoder {
  public:
    explicit Base64Decoder(std::span<std::uint8_t> output) : output_(output) {}

    [[nodiscard]] bool take(char byte) {
        const std::size_t character = static_cast<unsigned char>(byte) & character_mask;
        const std::uint8_t symbol = decoding_table[character];
        switch (symbol) {
        case space_class:
        case carriage_return_class:
            return true;
        case line_feed_class:
            line_length_ = 0;
            return true;
        case dash_class:
            return flush();
        default:
            if (character == std::size_t{pad}) {
                ++pads_seen_;
            }
            return take_digit(symbol);
        }
    }

    // Digits left over without a "=" before them are dropped unseen, invalid ones too.
    [[nodiscard]] bool finish() {
        return (pending_count_ % group_digits == 0 || pads_seen_ != 0) ? flush() : true;
    }

    // The bytes decoded so far, whether or not there was room for them. Three for every four
    // characters of a 32-bit count at most.
    [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(size_); }

  private:
    // An invalid symbol waits like a digit, and is found when the group is flushed.
    [[nodiscard]] bool take_digit(std::uint8_t symbol) {
        pending_[pending_count_++] = symbol;
        if (++line_length_ >= refused_line_length) {
            return false;
        }
        return pending_count_ == pending_.size() ? flush() : true;
    }

    [[nodiscard]] bool flush() {
        if (pending_count_ == 0) {
            // Counts as an end of the data: what follows is one byte shorter than its groups.
            pads_seen_ = 1;
            return true;
        }
        const auto digits = std::span(pending_).first(pending_count_);
        const std::size_t produced = digits.size() / group_digits * group_bytes;
        const bool valid = digits.size() % group_digits == 0 && pads_seen_ <= produced &&
                           std::ranges::find(digits, invalid_class) == digits.end();
        if (!valid) {
            return false;
        }
        for (std::size_t group = 0; group < digits.size() / group_digits; ++group) {
            write_group(digits.subspan(group * group_digits).first<group_digits>(),
                        size_ + group * group_bytes);
        }
        // The count of "=" is one of the whole text and comes off every flush.
        size_ += produced - pads_seen_;
        pending_count_ = 0;
        return true;
    }

    void write_group(std::span<const std::uint8_t, group_digits> digits, std::size_t position) {
        std::uint32_t bits = 0;
        for (const std::uint8_t digit : digits) {
            bits = bits << 6 | digit;
        }
        for (std::size_t i = 0; i < group_bytes && position + i < output_.size(); ++i) {
            output_[position + i] = static_cast<std::uint8_t>(bits >> (16 - 8 * i));
        }
    }

    std::span<std::uint8_t> output_;
    std::size_t size_ = 0;
    std::array<std::uint8_t, line_digits> pending_{};
    std::size_t pending_count_ = 0;
    std::size_t line_length_ = 0; // characters since the last line feed, white space apart
    std::size_t pads_seen_ = 0;
};

} // namespace

bool base64_encode(const std::uint8_t* bytes, std::uint32_t count, char* text,
                   std::uint32_t* size) {
    const std::uint64_t needed = encoded_size(count);
    if (size == nullptr || needed > std::numeric_limits<std::uint32_t>::max()) {
        return fail(ERROR_BAD_ARGUMENTS);
    }
    if (text == nullptr) {
        *size = static_cast<std::uint32_t>(needed);
        return succeed();
    }
    if (bytes == nullptr && count != 0) {
        return fail(ERROR_BAD_ARGUMENTS);
    }
    if (*size < needed) {
        *size = static_cast<std::uint32_t>(needed);
        return fail(ERROR_MORE_DATA);
    }
    char* end = text;
    for (std::span rest(bytes, count); !rest.empty();) {
        auto line = rest.first(std::min(line_bytes, rest.size()));
        rest = rest.subspan(line.size());
        while (!line.empty()) {
            const auto group = line.first(std::min(group_bytes, line.size()));
            line = line.subspan(group.size());
            end = encode_group(group, end);
        }
        *end++ = '\n';
    }
    *size = static_cast<std::uint32_t>(end - text);
    return succeed();
}

bool base64_decode(const char* text, std::uint32_t count, std::uint8_t* bytes,
                   std::uint32_t* size) {
    if (text == nullptr || size == nullptr) {
        return fail(ERROR_BAD_ARGUMENTS);
    }
    const std::span<std::uint8_t> output(bytes, bytes == nullptr ? 0 : *size);
    *size = 0;
    Base64Decoder decoder(output);
    for (const char byte : std::string_view(text, count)) {
        if (!decoder.take(byte)) {
            return fail(static_cast<DWORD>(CRYPT_E_BAD_ENCODE));
        }
    }
    if (!decoder.finish()) {
        return fail(static_cast<DWORD>(CRYPT_E_BAD_ENCODE));
    }
    *size = decoder.size();
    if (bytes != nullptr && decoder.size() > output.size()) {
        return fail(ERROR_MORE_DATA);
    }
    return succeed();
}

} // namespace norvane
