// Certificates for tests (RFC 5280, 4.1).
#pragma once

#include "support/Extensions.h"
#include "support/Key.h"

namespace norvane::testing {

// Every field is put into the certificate as it stands, valid or not:
//     CertificateBuilder{.subject = common_name("A"), .extensions = {key_usage(...)}}.sign(key)
struct CertificateBuilder {
    int version = 3;                               // 1, 2 or 3; 0 leaves the field out
    Bytes serial = {0x01};                         // content octets
    std::optional<Bytes> signature_algorithm = {}; // inside the tbs; absent: that of the key
    Bytes issuer = common_name("Issuer");
    Bytes not_before = utc_time("260101000000Z"); // whole Time elements
    Bytes not_after = utc_time("351231235959Z");
    Bytes subject = common_name("Subject");
    Bytes spki = Key::ec(0).spki();
    std::vector<Bytes> extensions = {}; // none: the field is left out

    // TBSCertificate; `algorithm` stands in for an absent signature_algorithm.
    [[nodiscard]] Bytes tbs(const Bytes& algorithm = Key::ec(0).signature_algorithm()) const {
        return sequence(version == 0 ? Bytes{} : context(0, integer(version - 1)),
                        integer_octets(serial), signature_algorithm.value_or(algorithm), issuer,
                        sequence(not_before, not_after), subject, spki,
                        extensions.empty() ? Bytes{} : context(3, sequence(extensions)));
    }
    [[nodiscard]] Bytes sign(const Key& key) const {
        return key.sign_element(tbs(key.signature_algorithm()));
    }
};

} // namespace norvane::testing
