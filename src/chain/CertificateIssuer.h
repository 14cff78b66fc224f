#pragma once

#include "chain/ChainValidator.h"

namespace norvane {

/// The certificate that issued this one, of the run's cache; null if none can be found. It is the
/// best ranked candidate that is valid at the time of check, passes the test of its private key's
/// usage period and verifies the signature. Whether it is trusted, a CA or revoked does not matter
/// here.
[[nodiscard]] const CertificateItem* resolve_issuer(ChainValidator& chain,
                                                    const CertificateItem& certificate);

} // namespace norvane
