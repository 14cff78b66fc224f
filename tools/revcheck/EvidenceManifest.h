#pragma once

#include "Evidence.h"

namespace norvane {

inline constexpr unsigned evidence_format = 1;

/// How many arrays and objects of a manifest may lie in each other.
inline constexpr std::size_t max_manifest_nesting = 16;

/// The manifest as text in JSON.
[[nodiscard]] std::string manifest_text(const Evidence& evidence);

/// Reads a manifest. Throws BadEvidence for one that manifest_text would not have made, be it by a
/// space: whoever reads it then reads the same.
[[nodiscard]] Evidence read_manifest(const std::string& text);

/// The members of an evidence with its manifest, whose list of members is made here.
[[nodiscard]] Members with_manifest(Evidence evidence, Members members);

/// Reads what is in an archive. Throws BadEvidence unless the members are those that the manifest
/// tells of, with the digests that it tells.
[[nodiscard]] Evidence read_evidence(const Members& members);

/// Text from outside as JSON tells it: U+FFFD stands for what is no UTF-8.
[[nodiscard]] std::string as_json_tells(std::string_view text);

} // namespace norvane
