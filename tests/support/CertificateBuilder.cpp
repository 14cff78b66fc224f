#include "support/CertificateBuilder.h"

namespace norvane::testing {
namespace {

Bytes tbs_with(const CertificateBuilder& fields, const Bytes& algorithm) {
    return sequence(fields.version == 0 ? Bytes{} : context(0, integer(fields.version - 1)),
                    integer_octets(fields.serial), algorithm, fields.issuer,
                    sequence(fields.not_before, fields.not_after), fields.subject, fields.spki,
                    fields.extensions.empty() ? Bytes{} : context(3, sequence(fields.extensions)));
}

} // namespace

Bytes CertificateBuilder::tbs() const {
    return tbs_with(*this, signature_algorithm.value_or(Key::ec(0).signature_algorithm()));
}

Bytes CertificateBuilder::sign(const Key& key) const {
    const Bytes signed_part =
        tbs_with(*this, signature_algorithm.value_or(key.signature_algorithm()));
    return signed_element(signed_part, key.signature_algorithm(), key.sign(signed_part));
}

} // namespace norvane::testing
