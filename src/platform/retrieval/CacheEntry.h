#pragma once

#include "asn1/ByteView.h"
#include "platform/retrieval/Digest.h"
#include "platform/retrieval/Fetch.h"
#include "platform/store/SignedData.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// A file of the cache, which holds the response of one URL for one kind of objects. Numbers are
/// little-endian:
///
///     octets
///          8  "NRVNURL2"
///          4  kind: 1 certificates, 2 CRLs
///      4 * 4  lengths of the texts: URL, ETag, Last-Modified, and where the response came from
///          8  when it was received, in seconds since 1970
///          8  length of the content
///         32  SHA-256 of the content
///         32  SHA-256 of all above and of the texts
///             the texts
///             the content: parts, each with 4 octets of length before it
///
/// A file that differs in anything is none.
struct CacheEntry {
    ObjectKind kind{};
    std::string url;
    Validators validators;
    std::int64_t received = 0; ///< seconds since 1970
    Digest content_digest{};
    std::vector<ByteView> parts; ///< of bytes that others own
};

/// What goes before each part in the content.
[[nodiscard]] std::string encoded_length(std::size_t length);

[[nodiscard]] Digest content_digest(std::span<const ByteView> parts);

/// All of the file before the content. The digest of the content is taken as it stands.
[[nodiscard]] std::string encode_cache_header(const CacheEntry& entry);

/// Reads a file, whose bytes the parts of the entry view. Nothing if it is none.
[[nodiscard]] std::optional<CacheEntry> decode_cache_entry(std::span<const std::uint8_t> file);

/// What is retrieved, as one text: the kind and the URL. Each kind has a response of its own, so
/// that one cannot displace the other.
[[nodiscard]] std::string retrieval_key(ObjectKind kind, std::string_view url);

/// The file for a URL and a kind: 64 hexadecimal digits and an ending.
[[nodiscard]] std::string cache_file_name(ObjectKind kind, std::string_view url);
inline constexpr std::string_view cache_file_ending = ".response";

} // namespace norvane
