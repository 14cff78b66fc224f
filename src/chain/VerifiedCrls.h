#pragma once

#include "items/ChainBase.h"

#include <set>
#include <utility>

namespace norvane {

/// Which CRLs of a run have been verified with which certificate's key. Both passes of a decision
/// ask for the same signatures, and hashing a CRL is most of what a decision about it costs.
class VerifiedCrls {
  public:
    /// Whether the CRL's signature verifies with the signer's key; both are items of the run's
    /// caches. Tells if it does not. Only a success is remembered: a failure may have been for want
    /// of something else. Throws as CRLItem::verify_with_key.
    [[nodiscard]] bool verify(const CRLItem& crl, const CertificateItem& signer);

  private:
    std::set<std::pair<const CRLItem*, const CertificateItem*>> verified_;
};

} // namespace norvane
