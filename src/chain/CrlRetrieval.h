#pragma once

#include "chain/ChainValidator.h"

#include <norvane/wincrypt.h>

namespace norvane {

// CRLs from URLs, each of which is tried once in a pass. Nothing is judged here. `pass_flags` is
// CRYPT_CACHE_ONLY_RETRIEVAL, or 0 to allow the wire.
//
// A retrieval that fails is passed over. Both throw Asn1Exception for a distribution point that
// does not decode, CAException as the arithmetic of time-outs does, and as the accessors of items
// do.

/// Files the CRLs of the certificate's distribution points (RFC 5280 4.2.1.13) and of its freshest
/// CRL points (4.2.1.15).
void retrieve_crls_for_certificate(ChainValidator& chain, const CertificateItem& certificate,
                                   CrlBaseSet& base, DeltaCrlMap& deltas, DWORD pass_flags);

/// Adds the CRLs that the points bring to `out`, base and delta CRLs alike.
void retrieve_crls(ChainValidator& chain, const DistributionPointList& points, CrlItemSet& out,
                   DWORD pass_flags);

} // namespace norvane
