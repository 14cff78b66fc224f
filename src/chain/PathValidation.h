#pragma once

#include "chain/ChainValidator.h"

namespace norvane {

/// Tests the whole path, whose first element is a trust anchor, from the root to the end. The first
/// test that fails ends it with a record of what failed; there are no warnings.
///
/// Other than RFC 5280 6.1 tells it reads no policies, name constraints or critical flags, tests no
/// basic constraints of the last element, and counts a self-issued CA like any other. Throws as the
/// accessors of items and delegated_revocation_check do.
[[nodiscard]] bool validate_path(ChainValidator& chain);

} // namespace norvane
