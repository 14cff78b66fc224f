#pragma once

#include "chain/ChainValidator.h"
#include "chain/RunStatus.h"

#include <norvane/wincrypt.h>

namespace norvane {

/// Decides about one certificate with the CRLs gathered so far, in two stages: through its
/// distribution points first, and then, if these leave reasons uncovered, through the CRLs of its
/// issuer without any point. It is good once the CRLs that apply cover all reasons and none lists
/// it; the first that does list it decides.
///
/// `issuer` is what resolve_issuer found; `base` and `deltas` belong to the run. `used` becomes the
/// certificate's good_crls if the first stage ends good. `pass_flags` as for retrieve_crls.
///
/// What is thrown in the first stage costs the point or the CRL; the second stage throws as the
/// accessors of items, crl_search and retrieve_crls do.
[[nodiscard]] RunStatus crl_status_decision(ChainValidator& chain,
                                            CertificateChainItem& certificate,
                                            const CertificateItem& issuer, const CrlBaseSet& base,
                                            DeltaCrlMap& deltas, const CrlItemSet& used,
                                            DWORD pass_flags);

} // namespace norvane
