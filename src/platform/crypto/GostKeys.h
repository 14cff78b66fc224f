#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// A key of GOST R 34.10-2001 (RFC 4491 2.3.2) or GOST R 34.10-2012 (RFC 9215 4): an OCTET STRING
/// with the coordinates of a point, x and y, both little-endian, on the curve that the parameters
/// name. Null if the bytes are no such key. Throws what Botan throws.
///
/// @param algorithm one of `CALG_NORVANE_GOST_R3410_2001`, `_2012_256`, `_2012_512`.
[[nodiscard]] std::shared_ptr<const PublicKey> import_gost_key(ALG_ID algorithm, Octets parameters,
                                                               Octets key);

} // namespace norvane
