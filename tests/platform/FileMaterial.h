// The contents of files for tests, written by libcrypto.
#pragma once

#include "support/Der.h"

#include <string>
#include <vector>

namespace norvane::testing {

[[nodiscard]] std::string pem(const std::string& label, const Bytes& content);

// A SignedData of PKCS #7 without signers.
[[nodiscard]] Bytes signed_data(const std::vector<Bytes>& certificates,
                                const std::vector<Bytes>& crls);

} // namespace norvane::testing
