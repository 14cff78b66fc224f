#pragma once

#include "platform/retrieval/Digest.h"

#include <norvane/wincrypt.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace norvane {

/// That there is a CRL of a scope and a date. A scope is an issuer, an authority key identifier, an
/// issuing distribution point, and whether the CRL is a delta (RFC 5280 5.2.1, 5.2.4, 5.2.5).
struct CrlMark {
    Digest scope{};
    std::uint64_t this_update = 0; ///< ticks of 100 ns since 1601
};

[[nodiscard]] CrlMark mark_of(const CRL_INFO& crl);

/// Whether a CRL of this date may keep older ones out: one that is dated more than a day ahead may
/// not, since clocks differ by less.
[[nodiscard]] bool is_believable(std::uint64_t this_update, std::time_t now) noexcept;

/// What a mark rests on: that a server has delivered the CRL, whose signature nobody has looked at,
/// or that a verdict rests on it.
enum class MarkGround : std::uint8_t { served, verified };

/// The file for the mark of a scope on a ground: 64 hexadecimal digits and an ending.
[[nodiscard]] std::string mark_file_name(const Digest& scope, MarkGround ground);
[[nodiscard]] std::string_view mark_file_ending(MarkGround ground) noexcept;

/// The file of a mark. Numbers are little-endian:
///
///     octets
///          8  "NRVNCRL1"
///          8  this_update
///         32  SHA-256 of the name of the file and of all above
///
/// A file that differs in anything is none.
[[nodiscard]] std::string encode_mark(std::string_view file_name, std::uint64_t this_update);
[[nodiscard]] std::optional<std::uint64_t> decode_mark(std::string_view file_name,
                                                       std::string_view file);
inline constexpr std::size_t mark_file_size = 48;

} // namespace norvane
