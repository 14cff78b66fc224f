#include "chain/VerifiedCrls.h"

#include "chain/LinkTests.h"
#include "chain/RecordParts.h"

namespace norvane {

bool VerifiedCrls::verify(const CRLItem& crl, const CertificateItem& signer) {
    const std::pair signature(&crl, &signer);
    if (verified_.contains(signature)) {
        return true;
    }
    if (!crl.verify_with_key(public_key(signer))) {
        return fails(event::crl_signature_wrong, told(crl), told(signer, "key"));
    }
    verified_.insert(signature);
    return true;
}

} // namespace norvane
