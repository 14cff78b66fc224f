#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// A key of GOST R 34.10-94 (RFC 4491 2.3.1): an OCTET STRING with the number y, little-endian, in
/// the group that the parameters name. Null if the bytes are no such key. Throws what Botan throws.
[[nodiscard]] std::shared_ptr<const PublicKey> import_gost_94_key(Octets parameters, Octets key);

} // namespace norvane
