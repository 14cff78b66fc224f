#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// The algorithms of GostLibrary.h. Their use fails where that library cannot be loaded.
[[nodiscard]] const Provider& gost_provider();

} // namespace norvane
