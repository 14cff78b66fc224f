#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// RSA with PKCS #1 v1.5, DSA and ECDSA with the hashes of the SHA family, by OpenSSL's libcrypto.
///
/// It works in a library context of its own, so what the application configures for itself in
/// libcrypto, or loads into it, does not change what is verified here. Throws LibcryptoError if
/// libcrypto cannot be started.
[[nodiscard]] const Provider& libcrypto_provider();

} // namespace norvane
