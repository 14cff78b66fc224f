#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// GOST R 34.10 in its three generations with the hashes of GOST R 34.11, by Botan.
///
/// Botan takes the memory of its numbers from one pool of locked pages behind one mutex. Where the
/// system lets a process lock pages, two threads may so reach only one and a half times the rate of
/// one. The pool is for secrets, of which there are none here, but it also serves the application's
/// own; so it is left to the application to do without it: BOTAN_MLOCK_POOL_SIZE=0 in its
/// environment.
[[nodiscard]] const Provider& botan_provider();

} // namespace norvane
