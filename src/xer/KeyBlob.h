#pragma once

#include <norvane/wincrypt.h>

#include <cstdint>
#include <limits>

namespace norvane {

// A GOST R 34.10-94 public key as the providers take it, all numbers little-endian:
//
//     0   1  type, 6
//     1   1  version, 0x20
//     2   2  1
//     4   4  ALG_ID of the key
//     8   4  "MAG1"
//     12  4  length of the key in bits
//     16  n  GostR3410-94-PublicKeyParameters in BER, one element
//     16+n   the key

inline constexpr std::uint32_t key_blob_header_size = 16;

/// Octets of the longest key whose length in bits fits the header.
inline constexpr std::uint32_t max_key_size = std::numeric_limits<std::uint32_t>::max() / 8;

/// Writes the header of the blob of a key of `key_size` octets, max_key_size at most, to `out`.
void write_key_blob_header(BYTE* out, ALG_ID algorithm, std::uint32_t key_size);

/// The octets of the key as `header`, of key_blob_header_size octets, has it; at most max_key_size.
/// Nothing else in the header is looked at.
[[nodiscard]] std::uint32_t key_size_in(const BYTE* header);

} // namespace norvane
