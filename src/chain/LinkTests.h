#pragma once

#include "asn1/CommonTypes.h"
#include "asn1/Time.h"
#include "items/ChainBase.h"

namespace norvane {

// Tests of one certificate, or of one link between an issuer and what it issued. Each tells what
// has failed. All throw as the accessors of items do.

/// Whether `time` lies within the certificate's validity, its two ends included.
[[nodiscard]] bool is_time_valid(const CertificateItem& certificate, ASN1CUTCTime& time);

/// Whether the issuer's private key was in its usage period at the time `when`, with which it
/// issued something. Always true unless strict_pkup_is_on().
[[nodiscard]] bool private_key_was_usable(const ASN1T_Time& when, const CertificateItem& issuer);

/// Whether the issuer's key verifies the signature of the certificate.
[[nodiscard]] bool is_signed_by(const CertificateItem& certificate, const CertificateItem& issuer);

[[nodiscard]] inline const ASN1T_Time& not_before(const CertificateItem& certificate) {
    return certificate.decoded()->tbsCertificate.validity.notBefore;
}

[[nodiscard]] inline const ASN1T_SubjectPublicKeyInfo&
public_key(const CertificateItem& certificate) {
    return certificate.decoded()->tbsCertificate.subjectPublicKeyInfo;
}

[[nodiscard]] inline const ASN1T_Time& this_update(const CRLItem& crl) {
    return crl.decoded()->tbsCertList.thisUpdate;
}

/// Not a time if the CRL has none, which is told; comparing it throws then.
[[nodiscard]] const ASN1T_Time& next_update(const CRLItem& crl);

} // namespace norvane
