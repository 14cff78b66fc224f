#pragma once

#include "chain/ChainValidator.h"

#include <norvane/wincrypt.h>

#include <cstdint>

namespace norvane {

// The choice among delta CRLs (RFC 5280 5.2.4). All throw as the accessors of items do.

/// The delta CRLs that apply to a base CRL, newest first; none if the base CRL has no number. Those
/// that its own freshest CRL points bring are filed in `deltas` first; other CRLs from there are
/// dropped. `pass_flags` as for retrieve_crls.
[[nodiscard]] DeltaCrlSet select_deltas(ChainValidator& chain, const CRLItem& crl,
                                        DeltaCrlMap& deltas, DWORD pass_flags);

/// Whether the delta starts at or before the base CRL, goes beyond it, and is current at
/// `verify_time`, its two ends included.
[[nodiscard]] bool delta_applies(const CRLItem& delta, std::uint32_t base_number,
                                 ASN1CUTCTime& verify_time);

/// Those of the same issuer, issuing distribution point and authority key identifier.
[[nodiscard]] DeltaCrlSet same_scope_deltas(const DeltaCrlSet& deltas, const CRLItem& crl);

/// The newest delta that verifies with the signer's key, null if there is none.
[[nodiscard]] const CRLItem* first_signed_delta(ChainValidator& chain, const DeltaCrlSet& deltas,
                                                const CertificateItem& signer);

} // namespace norvane
