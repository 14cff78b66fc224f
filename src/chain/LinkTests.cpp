#include "chain/LinkTests.h"

#include "items/PrivateKeyUsage.h"
#include "values/CompareTimes.h"

namespace norvane {

bool is_time_valid(const CertificateItem& certificate, ASN1CTime& time) {
    const ASN1T_Validity& validity = certificate.decoded()->tbsCertificate.validity;
    return compare_times(validity.notAfter, time) >= 0 &&
           compare_times(validity.notBefore, time) <= 0;
}

bool private_key_was_usable(const ASN1T_Time& when, const CertificateItem& issuer) {
    return !strict_pkup_is_on() ||
           private_key_usage_check(date_from_asn1_time(when.text, when.t), issuer);
}

} // namespace norvane
