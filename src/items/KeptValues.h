#pragma once

#include "asn1/ExtensionValues.h"
#include "items/CertName.h"
#include "items/DistributionPoint.h"
#include "items/LazyExtension.h"
#include "values/ASN1Blob.h"
#include "values/EncodeValue.h"

#include <optional>
#include <string>

namespace norvane {

// What accessors of certificates and of CRLs keep in the same way.

template <class T>
[[nodiscard]] const T* pointer_to(const std::optional<T>& value) {
    return value ? &*value : nullptr;
}

[[nodiscard]] inline CACMPT_BLOB blob_of(ByteView bytes) { return {bytes.data, bytes.length}; }

/// A distribution point list of the item's own; none if the content is not what its type says.
inline void keep_distribution_points(const ASN1T_Extension& extension,
                                     Lazy<std::optional<DistributionPointList>>& lazy) {
    if (const auto* const points = extension.value_as<ASN1T_CRLDistributionPoints>()) {
        lazy.kept = make_distribution_points(*points);
    }
}

/// keyIdentifier of an authority key identifier, empty if it or the field is absent.
[[nodiscard]] inline CACMPT_BLOB key_identifier_of(const ASN1T_AuthorityKeyIdentifier* identifier) {
    return identifier != nullptr && identifier->m.keyIdentifierPresent
               ? blob_of(identifier->keyIdentifier)
               : CACMPT_BLOB();
}

/// The text of authorityCertSerialNumber, empty if it or the field is absent.
[[nodiscard]] inline std::string cert_serial_of(const ASN1T_AuthorityKeyIdentifier* identifier) {
    return identifier != nullptr && identifier->m.authorityCertSerialNumberPresent
               ? identifier->authorityCertSerialNumber.text()
               : std::string();
}

/// A name as the encoder gives it back from the decoded structure.
[[nodiscard]] inline CACMPT_CERT_NAME make_cert_name(const ASN1T_Name& decoded) {
    ASN1T_Name name = decoded;
    return CACMPT_CERT_NAME(encode_value(name, source_module::chain_base, __LINE__));
}

} // namespace norvane
