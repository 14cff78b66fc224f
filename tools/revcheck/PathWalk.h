#pragma once

#include <norvane/wincrypt.h>

#include <cstdint>
#include <string>
#include <vector>

namespace norvane {

/// Whether the check was allowed to use the network.
enum class Retrieval : std::uint8_t { from_network, cache_only };

/// Where a check looked, and for which moment.
struct Surroundings {
    HCERTSTORE root = nullptr;
    std::vector<HCERTSTORE> certs; ///< the root store among them
    HCERTSTORE crls = nullptr;
    PCCERT_CONTEXT issuer = nullptr; ///< may be null
    FILETIME time{};
    Retrieval retrieval{};
};

/// Goes from the certificate up to the root, and looks at each step for what a check needs: a
/// certificate of the issuer that is valid and verifies the signature, a current CRL that one of
/// the issuer's keys has signed, and at the end a certificate in the Root store. Tells the first
/// thing that is missing, or that nothing is.
///
/// This is a plain look, not the decision: CRLs of other signers, scopes and reasons are not
/// followed. Throws CAException if a certificate cannot be looked into.
[[nodiscard]] std::vector<std::string> walk_path(PCCERT_CONTEXT certificate,
                                                 const Surroundings& around);

} // namespace norvane
