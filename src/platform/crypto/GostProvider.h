#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// The algorithms of GostLibrary.h; none where that library is not installed. Throws SystemFailure
/// where it is and cannot be loaded.
[[nodiscard]] const Provider& gost_provider();

} // namespace norvane
