#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace norvane {

// The text of a GOST R 34.10-94 public key: one element, whose only content is the Base64 text of
// the key (values/Base64.h), line feeds included:
//
//     <GostR3410_94_PublicKeyOctetString>QUJD
//     </GostR3410_94_PublicKeyOctetString>

inline constexpr std::string_view key_element = "GostR3410_94_PublicKeyOctetString";

/// Characters of an opening or closing tag, "<name>" and "</name>".
inline constexpr std::uint32_t opening_tag_length = key_element.size() + 2;
inline constexpr std::uint32_t closing_tag_length = key_element.size() + 3;

/// What is told to be the room for the text of a key of `key_size` bytes, max_key_size at most,
/// with a terminating zero. The text of a key of one or two bytes needs more than that.
[[nodiscard]] constexpr std::uint32_t stated_key_text_size(std::uint32_t key_size) {
    constexpr std::uint32_t size_for_each_byte = 3;
    constexpr std::uint32_t size_of_tags = 2 * (key_element.size() + 1) + 2;
    return key_size * size_for_each_byte + size_of_tags;
}

/// What the text of any key of `key_size` bytes, max_key_size at most, fits into, with a
/// terminating zero.
[[nodiscard]] constexpr std::uint32_t key_text_room(std::uint32_t key_size) {
    constexpr std::uint32_t missing_for_the_shortest = 4;
    return stated_key_text_size(key_size) + missing_for_the_shortest;
}

/// Writes the text of `key` with a terminating zero to `room`, which holds key_text_room
/// characters. Returns its length without the zero, or 0 with the last error of base64_encode.
[[nodiscard]] std::uint32_t write_key_text(std::span<const std::uint8_t> key, std::span<char> room);

/// The Base64 text inside the element; empty if `text` is anything but that element, the last error
/// being left alone.
[[nodiscard]] std::string_view key_text_content(std::string_view text);

} // namespace norvane
