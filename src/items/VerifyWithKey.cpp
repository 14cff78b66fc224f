#include "crypto/VerifySignature.h"
#include "items/CRLItem.h"
#include "items/CertificateItem.h"

namespace norvane {

bool CertificateItem::verify_with_key(const ASN1T_SubjectPublicKeyInfo& key) const {
    const ASN1T_Certificate& certificate = source_.tree();
    ASN1T_TBSCertificate tbs = certificate.tbsCertificate;
    ASN1BEREncodeBuffer buffer;
    const ASN1C_TBSCertificate control(buffer, tbs);
    return verify_signature(buffer, control, certificate.signature, key,
                            certificate.signatureAlgorithm);
}

bool CRLItem::verify_with_key(const ASN1T_SubjectPublicKeyInfo& key) const {
    const ASN1T_CertificateList& crl = source_.tree();
    ASN1T_TBSCertList tbs = crl.tbsCertList;
    ASN1BEREncodeBuffer buffer;
    const ASN1C_TBSCertList control(buffer, tbs);
    return verify_signature(buffer, control, crl.signature, key, crl.signatureAlgorithm);
}

} // namespace norvane
