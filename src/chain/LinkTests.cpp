#include "chain/LinkTests.h"

#include "chain/RecordParts.h"
#include "items/PrivateKeyUsage.h"
#include "values/CompareTimes.h"

namespace norvane {

bool is_time_valid(const CertificateItem& certificate, ASN1CUTCTime& time) {
    const ASN1T_Validity& validity = certificate.decoded()->tbsCertificate.validity;
    if (compare_times(validity.notAfter, time) < 0) {
        return fails(event::certificate_expired, told(certificate),
                     record_value("notAfter", validity.notAfter), record_value("time", time));
    }
    return compare_times(validity.notBefore, time) <= 0 ||
           fails(event::certificate_not_yet_valid, told(certificate),
                 record_value("notBefore", validity.notBefore), record_value("time", time));
}

bool private_key_was_usable(const ASN1T_Time& when, const CertificateItem& issuer) {
    return !strict_pkup_is_on() ||
           private_key_usage_check(date_from_asn1_time(when.text, when.t), issuer) ||
           fails(event::key_period_not_kept, told(issuer), record_value("used", when));
}

bool is_signed_by(const CertificateItem& certificate, const CertificateItem& issuer) {
    return certificate.verify_with_key(public_key(issuer)) ||
           fails(event::signature_wrong, told(certificate), told(issuer, "key"));
}

const ASN1T_Time& next_update(const CRLItem& crl) {
    const ASN1T_TBSCertList& list = crl.decoded()->tbsCertList;
    if (list.m.nextUpdatePresent == 0) {
        note(event::crl_without_next_update, told(crl));
    }
    return list.nextUpdate;
}

} // namespace norvane
