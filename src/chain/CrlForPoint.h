#pragma once

#include "chain/ChainValidator.h"
#include "chain/RunStatus.h"

#include <cstdint>

namespace norvane {

/// What one base CRL says about the certificate through one of its distribution points, or with
/// `point` null through none. CHAIN_STATUS_GOOD if the CRL does not apply, its signer cannot be
/// validated, or it does not revoke the certificate; in the last case the reasons that it covers
/// are added to `covered_reasons`. Otherwise the reason code of the revocation.
///
/// The CRLs consulted, and those that have an entry, are noted in the certificate's info. Throws as
/// the accessors of items and find_crl_issuer do.
[[nodiscard]] RunStatus check_crl_for_point(ChainValidator& chain,
                                            CertificateChainItem& certificate, const CRLItem& crl,
                                            const DeltaCrlSet& deltas_for_crl,
                                            const DistributionPointItem* point,
                                            std::uint8_t& covered_reasons);

} // namespace norvane
