// libcrypto as the judge of what our runtime reads.
#pragma once

#include "asn1/ByteView.h"

namespace norvane::testing {

// Decode the input with both. True if both accept all of it; false if either does not. Both must
// then have read the same serial numbers, names, times and extensions, and in a list the same
// entries in the same order: else throws std::logic_error with what differs.
[[nodiscard]] bool both_accept_certificate(ByteView input);
[[nodiscard]] bool both_accept_list(ByteView input);

} // namespace norvane::testing
