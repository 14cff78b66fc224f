#pragma once

#include "Evidence.h"

#include "asn1/ByteView.h"

#include <cstddef>

namespace norvane {

// What an archive may hold at most, whatever it says of itself. Octets are those that come out of
// it. The record of one decision holds up to a gibibyte of objects; no evidence that was seen comes
// near.
inline constexpr std::size_t max_archive_members = 20'000;
inline constexpr std::size_t max_archive_octets = std::size_t{1} << 30;
inline constexpr std::size_t max_object_octets = std::size_t{512} << 20;
inline constexpr std::size_t max_text_octets = std::size_t{128} << 20; ///< verdicts and records
inline constexpr std::size_t max_manifest_octets = std::size_t{16} << 20;

/// The members of a ZIP archive (APPNOTE 6.3), which must be such as write_archive makes: plain
/// files under the names of evidence, each once, stored or deflated, not encrypted. Throws
/// BadEvidence with the reason, and std::bad_alloc. No name of the archive is used as a path.
[[nodiscard]] Members read_archive(ByteView file);

/// Why an evidence is not written, in words.
class EvidenceNotWritten : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Writes the members, in the order of their names, to a file that is new or takes the place of
/// one, whole or not at all. The same members give the same octets. Throws EvidenceNotWritten, also
/// for what read_archive would not take, and std::bad_alloc.
void write_archive(const std::string& path, const Members& members);

} // namespace norvane
