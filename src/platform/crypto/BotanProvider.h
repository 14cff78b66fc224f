#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// GOST R 34.10 in its three generations with the hashes of GOST R 34.11, by Botan.
[[nodiscard]] const Provider& botan_provider();

} // namespace norvane
