#pragma once

#include <string_view>

#include <botan/bigint.h>

namespace norvane {

/// The numbers of a parameter set of GOST R 34.10-94: `a` has the prime order `q` modulo the prime
/// `p` of 1024 bits.
struct Gost94Group {
    Botan::BigInt p;
    Botan::BigInt q;
    Botan::BigInt a;
};

/// A parameter set of RFC 4357 11.3. Null if there is no such set, and for the one of 512 bits. The
/// group is made at the first call for it and lives as long as the process.
///
/// @param oid dotted decimal text.
[[nodiscard]] const Gost94Group* find_gost_94_group(std::string_view oid);

} // namespace norvane
