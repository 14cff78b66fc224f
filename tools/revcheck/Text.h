#pragma once

#include <norvane/wincrypt.h>

#include <string>
#include <string_view>

namespace norvane {

/// UTF-8 text from outside, made fit for a terminal: control characters, those that show nothing or
/// turn the direction of writing, and what is no UTF-8 become visible, as "\x1b", "\u{202e}",
/// "\u{0e0041}" and "\xff".
[[nodiscard]] std::string printable(std::string_view text);

/// An encoded Name as text in UTF-8, not yet printable; its octets in hexadecimal if it cannot be
/// read as a name.
[[nodiscard]] std::string name_text(const CERT_NAME_BLOB& name);

/// Two digits for each octet, without a prefix.
[[nodiscard]] std::string hexadecimal_text(const BYTE* octets, std::size_t count);

/// A serial number, least significant octet first, as "0x1f" or "-0x1f", without leading zeros of
/// whole octets.
[[nodiscard]] std::string serial_text(const CRYPT_INTEGER_BLOB& serial);

/// A whole number in two's complement, most significant octet first, in decimal digits.
[[nodiscard]] std::string decimal_text(const BYTE* octets, std::size_t count);

} // namespace norvane
