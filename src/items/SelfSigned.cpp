#include "items/CertificateItem.h"

namespace norvane {

bool CertificateItem::is_self_signed() const {
    if (self_signed_state_ == SelfSigned::unknown) {
        const bool verified = verify_with_key(source_.tree().tbsCertificate.subjectPublicKeyInfo);
        self_signed_state_ = verified ? SelfSigned::yes : SelfSigned::no;
    }
    return self_signed_state_ == SelfSigned::yes;
}

} // namespace norvane
