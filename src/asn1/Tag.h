#pragma once

#include <cstdint>
#include <string>

namespace norvane {

/// An identifier octet of X.690 8.1.2 for the tag numbers below 31, which are all that the
/// structures of X.509 use: class, constructed bit and number in one byte.
enum class Tag : std::uint8_t {
    boolean = 0x01,
    integer = 0x02,
    bit_string = 0x03,
    octet_string = 0x04,
    null = 0x05,
    object_identifier = 0x06,
    enumerated = 0x0a,
    utf8_string = 0x0c,
    printable_string = 0x13,
    teletex_string = 0x14,
    ia5_string = 0x16,
    utc_time = 0x17,
    generalized_time = 0x18,
    universal_string = 0x1c,
    bmp_string = 0x1e,
    sequence = 0x30,
    set = 0x31,
};

inline constexpr std::uint8_t constructed_bit = 0x20;
inline constexpr std::uint8_t tag_number_mask = 0x1f;

[[nodiscard]] constexpr std::uint8_t octet(Tag tag) { return static_cast<std::uint8_t>(tag); }

/// The context-specific tag [number] of a primitive value.
[[nodiscard]] constexpr Tag context(unsigned number) { return static_cast<Tag>(0x80 | number); }

/// The same tag with the constructed bit set: an explicit tag, or a string in segments.
[[nodiscard]] constexpr Tag constructed(Tag tag) {
    return static_cast<Tag>(octet(tag) | constructed_bit);
}

[[nodiscard]] constexpr bool is_constructed(Tag tag) { return (octet(tag) & constructed_bit) != 0; }

/// The name of a tag as error texts give it: "INTEGER", "[0] constructed", "tag 0x5f".
[[nodiscard]] std::string tag_name(Tag tag);

} // namespace norvane
