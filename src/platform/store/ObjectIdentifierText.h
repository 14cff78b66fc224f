#pragma once

#include "asn1/ObjectIdentifier.h"

#include <cstddef>

namespace norvane {

/// Room that is enough for the text of an identifier with its terminator.
[[nodiscard]] std::size_t object_identifier_text_room(const ASN1TObjId& identifier);

/// Writes the dotted decimal text and its terminator to `out`, which has that room, and returns
/// where the terminator ends. The text is empty if an arc exceeds 128 bits, which is room enough
/// for identifiers made from UUIDs (X.667).
char* write_object_identifier_text(const ASN1TObjId& identifier, char* out);

} // namespace norvane
