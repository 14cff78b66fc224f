#pragma once

#include "chain/ChainValidator.h"
#include "chain/RunStatus.h"

namespace norvane {

/// Decides about the certificate and gives what the run has learnt about it, whose pointers lead
/// into the caches of `chain`.
///
/// Throws CAException and its family, and std::bad_alloc, where a stage does.
[[nodiscard]] RunStatus verify(ChainValidator& chain, const CertificateItem& item,
                               CertificateCacheInfo& result);

/// The two passes of a decision. CRLs of the platform's URL cache are enough for a good verdict
/// only; anything else, a revocation included, is decided again with the wire allowed.
[[nodiscard]] RunStatus run(ChainValidator& chain, CertificateChainItem& certificate);

} // namespace norvane
