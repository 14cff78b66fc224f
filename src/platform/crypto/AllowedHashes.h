#pragma once

#include <norvane/wincrypt.h>

namespace norvane {

/// Whether the configuration lets a hash be used. Only SHA-1 can be switched off. Throws if the
/// configuration cannot be read for want of what the process needs for it.
[[nodiscard]] bool is_hash_allowed(ALG_ID hash);

} // namespace norvane
