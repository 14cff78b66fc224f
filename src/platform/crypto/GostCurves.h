#pragma once

#include <string_view>

#include <botan/ec_group.h>

namespace norvane {

/// The elliptic curve of a parameter set of GOST R 34.10-2001 (RFC 4357 11.4) or -2012 (RFC 7836,
/// appendix A). Twisted Edwards curves are in their Weierstrass form, which is what public keys
/// are given on.
///
/// @param oid dotted decimal text.
/// @return null if there is no such set. The curve is made at the first call for it and lives as
///     long as the process. Throws what Botan throws.
[[nodiscard]] const Botan::EC_Group* find_gost_curve(std::string_view oid);

} // namespace norvane
