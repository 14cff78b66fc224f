// Certificates for tests (RFC 5280, 4.1).
#pragma once

#include "support/Extensions.h"
#include "support/Key.h"

namespace norvane::testing {

// Every field is put into the certificate as it stands, valid or not:
//     CertificateBuilder{.subject = common_name("A"), .extensions = {key_usage(...)}}.sign(key)
struct CertificateBuilder {
    int version = 3;                                         // 1, 2 or 3; 0 leaves the field out
    Bytes serial = {0x01};                                   // content octets
    std::optional<Bytes> signature_algorithm = std::nullopt; // inside the tbs; absent: the key's
    Bytes issuer = common_name("Issuer");
    Bytes not_before = utc_time("260101000000Z"); // whole Time elements
    Bytes not_after = utc_time("351231235959Z");
    Bytes subject = common_name("Subject");
    Bytes spki = Key::ec(0).spki();
    std::vector<Bytes> extensions = {}; // none: the field is left out

    // TBSCertificate; without a signature_algorithm it names ecdsa-with-SHA256.
    [[nodiscard]] Bytes tbs() const;
    [[nodiscard]] Bytes sign(const Key& key) const;
};

} // namespace norvane::testing
