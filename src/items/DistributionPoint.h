#pragma once

#include "asn1/ExtensionValues.h"
#include "items/CertName.h"
#include "values/ASN1Blob.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace norvane {

/// One CRL distribution point, with values of its own that outlive the certificate or CRL. Each
/// field is empty if it is absent (RFC 5280 4.2.1.13).
struct DistributionPointItem {
    std::optional<CACMPT_CERT_NAME> crl_issuer_names; ///< DER GeneralNames, not a plain Name.
    std::optional<CACMPT_BLOB> distribution_point;    ///< DER DistributionPointName.
    /// The first eight bits of the reasons: 0x80 is unused, 0x40 keyCompromise and so on. Bits
    /// that the encoded string does not have are 0.
    std::optional<std::uint8_t> reasons;
};

using DistributionPointList = std::vector<DistributionPointItem>;

/// Throws Asn1Exception if a name cannot be encoded.
[[nodiscard]] DistributionPointList
make_distribution_points(const ASN1T_CRLDistributionPoints& points);

} // namespace norvane
