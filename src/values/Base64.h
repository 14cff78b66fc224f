#pragma once

#include <cstdint>

namespace norvane {

// Base64 text (RFC 4648, section 4) under the contract of the platform's buffer-size calls: a null
// output asks for the size alone, `size` is in and out, and the thread's last error is 0 after a
// success and tells the reason after a failure:
//   ERROR_BAD_ARGUMENTS  an argument is null that must not be, or the size exceeds 32 bits;
//                        an encoder's `size` is then untouched
//   ERROR_MORE_DATA      the output is too small; `size` holds what is needed
//   CRYPT_E_BAD_ENCODE   the text is not Base64; `size` is 0

/// Encodes `count` bytes in lines of 64 characters; each line, the last one too, ends in a line
/// feed. Writes no terminator.
/// `text`: room for `*size` characters, or null to ask for the size.
/// `size`: in, the room in characters; out, the characters written or needed.
[[nodiscard]] bool base64_encode(const std::uint8_t* bytes, std::uint32_t count, char* text,
                                 std::uint32_t* size);

/// Decodes `count` characters. White space is skipped, the top bit of each byte is ignored, and a
/// line may have up to 79 characters. Characters are decoded in runs, each of which ends with its
/// 64th character, with a "-", or with the text. A run that the text ends must be made of whole
/// groups of four if there is a "=" in the text; without one, an incomplete run is dropped whole.
/// `bytes`: room for `*size` bytes, or null to ask for the size. Bytes that "=" takes off the
/// result may still be written where there is room.
/// `size`: in, the room in bytes; out, the bytes decoded or needed.
[[nodiscard]] bool base64_decode(const char* text, std::uint32_t count, std::uint8_t* bytes,
                                 std::uint32_t* size);

} // namespace norvane
