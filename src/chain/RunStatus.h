#pragma once

#include <cstdint>

namespace norvane {

/// The outcome of a run: one of the two below, or the CRL reason code with which the certificate is
/// revoked.
using RunStatus = std::uint32_t;

/// Not revoked. Of a single CRL: it does not apply, or has nothing to say.
inline constexpr RunStatus CHAIN_STATUS_GOOD = 65535;
/// No verdict: no acceptable issuer, or the validated CRLs do not cover every reason.
inline constexpr RunStatus CHAIN_STATUS_NO_CHECK = 65534;

} // namespace norvane
