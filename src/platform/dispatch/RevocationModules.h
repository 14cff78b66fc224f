#pragma once

#include <norvane/wincrypt.h>

#include <span>

namespace norvane {

using VerifyRevocation = decltype(&CertVerifyRevocation);

/// The entries of the revocation modules, in the order of the configuration. The first call of the
/// process loads them, which other threads wait for. There are none inside the entry function of a
/// module that is being loaded, and at the exit of the process, when they have been detached.
///
/// Throws std::bad_alloc or SystemFailure; the next call tries again.
[[nodiscard]] std::span<const VerifyRevocation> revocation_modules();

} // namespace norvane
