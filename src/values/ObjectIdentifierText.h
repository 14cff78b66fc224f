#pragma once

#include "asn1/ObjectIdentifier.h"

#include <cstddef>
#include <string>

namespace norvane {

/// Reads a dotted identifier. Each arc is a number as strtoul reads it in base 0, so decimal, octal
/// with a leading 0 or hexadecimal with 0x; white space behind an arc is passed over. False, with
/// `oid` of no use, if anything else follows an arc, an arc exceeds 32 bits, or there are more
/// arcs than an ASN1OBJID holds.
[[nodiscard]] bool str_to_oid(const char* text, ASN1OBJID& oid);

/// The same for constants of the program. Throws CAException "Can't convert str to oid.".
[[nodiscard]] ASN1OBJID str_to_oid(const char* text);

/// Writes the dotted text with a terminating zero to `buffer`, of `capacity` bytes, at least 1. An
/// identifier without arcs gives the empty text. Throws Asn1DecodeException with `message` if the
/// text does not fit.
void oid_to_text(char* buffer, const ASN1OBJID& oid, std::size_t capacity, const char* message);

/// The same for a decoded identifier. One with an arc beyond 32 bits counts as not fitting.
void oid_to_text(char* buffer, const ASN1TObjId& oid, std::size_t capacity, const char* message);

/// The dotted text. Throws CAException "Can't convert oid to str." if it needs 512 bytes or more,
/// there are no arcs, or one exceeds 32 bits.
[[nodiscard]] std::string oid_to_string(const ASN1TObjId& oid);

} // namespace norvane
