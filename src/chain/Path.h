#pragma once

#include "items/ChainBase.h"

#include <cstdint>
#include <list>

namespace norvane {

/// An element of a certification path: a certificate of the run's cache and the marks that a path
/// leaves on it.
struct CertificateChainItem : KeyPairPtr<CertificateItem, CertificateCacheInfo> {
    using KeyPairPtr::KeyPairPtr;

    std::uint32_t reason = 0; ///< CRL reason code that goes with IS_REVOKED.
    std::uint32_t status = 0; ///< Bits of TrustStatus.h.
};

/// A certification path, the element nearest the root first; the issuer of an element stands
/// before it.
struct Chain {
    using Items = std::list<CertificateChainItem>;
    using Position = Items::iterator;

    Chain() = default;
    Chain(const Chain&) = default;
    Chain(Chain&&) = default;
    Chain& operator=(const Chain&) = default;
    Chain& operator=(Chain&&) = default;
    virtual ~Chain() = default;

    Items items;
    std::uint32_t path_status = 0; ///< Bits of TrustStatus.h; 0 while no fault is recorded.
    std::uint32_t path_reason = 0; ///< CRL reason code that goes with IS_REVOKED.
};

} // namespace norvane
