#pragma once

#include "asn1/ObjectIdentifier.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// The content octets (X.690 8.19) of an identifier in dotted decimal text. Nothing unless the text
/// is the one that the octets would be written as: from 2 to ASN1OBJID::max_arcs arcs of 32 bits,
/// without leading zeros, signs or white space, and the first two are ones that there can be.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> octets_of_dotted(std::string_view text);

/// The dotted decimal text; nothing for an identifier without arcs, with more than
/// ASN1OBJID::max_arcs, or with one beyond 32 bits.
[[nodiscard]] std::optional<std::string> dotted_text(const ASN1TObjId& oid);

} // namespace norvane
