#pragma once

#include "asn1/ASN1Context.h"
#include "asn1/Tag.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace norvane {

/// Text in units of 16 bits, as the platform's wide functions take it.
using WideString = std::basic_string<WCHAR>;

// Reading one string element. All return 0, or a negative status with the failure in `ctxt`; the
// results view the bytes that were set, or memory of the context.

/// Sets the bytes to read, which stay the caller's. With `tag` and `length`, also gives what
/// xd_tag_len would.
[[nodiscard]] int xd_setp(ASN1CTXT& ctxt, const std::uint8_t* bytes, std::uint32_t length,
                          Tag* tag = nullptr, std::uint32_t* content_length = nullptr);

/// The identifier octet and the content length of the next element, which stays unread. The
/// length is 0 if it is indefinite.
[[nodiscard]] int xd_tag_len(ASN1CTXT& ctxt, Tag& tag, std::uint32_t& content_length);

/// The octets of the next element, a string with this tag in one piece or in segments.
[[nodiscard]] int xd_charstr(ASN1CTXT& ctxt, Tag tag, std::string_view& text);

/// The characters of the next element, a BMPString; fails on an odd number of octets.
[[nodiscard]] int xd_16BitCharStr(ASN1CTXT& ctxt, std::u16string_view& text);

/// The characters of the next element, a UniversalString; fails unless four octets make each.
[[nodiscard]] int xd_32BitCharStr(ASN1CTXT& ctxt, std::u32string_view& text);

/// Appends the UTF-8 text to `wide`. A negative status, with `wide` unchanged, if it is ill formed
/// (RFC 3629: overlong forms, surrogates, beyond U+10FFFF, cut off).
[[nodiscard]] int rtUTF8ToWCS(ASN1CTXT& ctxt, std::string_view utf8, WideString& wide);

/// Appends characters of 32 bits to `wide`, those beyond 16 bits as surrogate pairs. A negative
/// status, with `wide` unchanged, if one is no character of Unicode.
[[nodiscard]] int rtUCSToWCSString(ASN1CTXT& ctxt, std::u32string_view characters,
                                   WideString& wide);

} // namespace norvane
