#pragma once

#include "asn1/ByteView.h"

#include <cstdint>

namespace norvane {

/// A hash for tables in memory: of the length, and of all the bytes, or of large objects of 64 KB
/// at either end, where what differs in all practice lies: dates in front, the signature behind. It
/// is keyed with secrets of this process, so that nobody can prepare small objects that meet in one
/// place. Equal hashes prove nothing.
[[nodiscard]] std::uint64_t byte_hash(ByteView bytes);

} // namespace norvane
