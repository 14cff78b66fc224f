#pragma once

#include "platform/crypto/Provider.h"

namespace norvane {

/// GOST R 34.10 in its three generations with the hashes of GOST R 34.11, by Botan: a library of
/// its own in folder "norvane", which is loaded when the first of them is wanted and stays. Botan
/// takes longer to load than a verdict with RSA does.
///
/// Botan takes the memory of its numbers from one pool of locked pages behind one mutex. Where the
/// system lets a process lock pages, two threads may so reach only one and a half times the rate of
/// one. The pool is for secrets, of which there are none here, but it also serves the application's
/// own; so it is left to the application to do without it: BOTAN_MLOCK_POOL_SIZE=0 in its
/// environment.
struct GostLibrary {
    /// As those of a Provider.
    std::unique_ptr<Hash> (*create_hash)(ALG_ID algorithm);
    std::shared_ptr<const PublicKey> (*import_key)(ALG_ID algorithm, Octets parameters, Octets key);
};

} // namespace norvane

/// The one visible function of that library.
extern "C" const norvane::GostLibrary* norvane_gost() noexcept;
