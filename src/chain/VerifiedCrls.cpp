#include "chain/VerifiedCrls.h"

#include "chain/LinkTests.h"

namespace norvane {

bool VerifiedCrls::verify(const CRLItem& crl, const CertificateItem& signer) {
    const std::pair signature(&crl, &signer);
    if (verified_.contains(signature)) {
        return true;
    }
    const bool holds = crl.verify_with_key(public_key(signer));
    if (holds) {
        verified_.insert(signature);
    }
    return holds;
}

} // namespace norvane
