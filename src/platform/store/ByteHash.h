#pragma once

#include "asn1/ByteView.h"

#include <cstdint>

namespace norvane {

/// A hash for tables in memory, of all the bytes, about as fast as they can be read. It is keyed
/// with secrets of this process, so that nobody can prepare bytes that meet in one place. Equal
/// hashes prove nothing.
[[nodiscard]] std::uint64_t byte_hash(ByteView bytes);

} // namespace norvane
