#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Whether the configuration lets a hash be used. Only SHA-1 can be switched off.
[[nodiscard]] bool is_hash_allowed(ALG_ID hash) noexcept;

} // namespace norvane
