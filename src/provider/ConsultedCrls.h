#pragma once

#include "chain/ChainValidator.h"

#include <norvane/wincrypt.h>

#include <cstdint>

namespace norvane {

/// A pair of CRLs that a run has consulted; the delta may be null.
struct CrlPair {
    const CRLItem* base = nullptr;
    const CRLItem* delta = nullptr;
};

/// The age of the information in seconds: from the earliest thisUpdate of the pairs to `now`, 0 if
/// that lies ahead. `pairs` is not empty. Throws as the accessors of items and date_from_asn1_time
/// do.
[[nodiscard]] std::uint32_t freshness_seconds(const CrlPairSet& pairs, ASN1CTime& now);

/// The pair to hand out: the one that decided, or else the one that expires first. `result` has
/// pairs. Throws as the accessors of items do.
[[nodiscard]] CrlPair pair_to_hand_out(const CertificateCacheInfo& result);

/// Lets go of what the caller's structure holds, stale contexts included. False if the platform
/// refuses.
[[nodiscard]] bool release_crls(CERT_REVOCATION_CRL_INFO& info);

/// Gives the caller contexts of the consulted CRLs and, if the certificate is listed, its entry.
/// What it holds is released first. False if the platform refuses to release or to make a context.
/// Throws as pair_to_hand_out does, and PlatformFailure if the process is to blame.
[[nodiscard]] bool hand_out_crls(CERT_REVOCATION_CRL_INFO& info, PCCERT_CONTEXT certificate,
                                 const CertificateCacheInfo& result);

} // namespace norvane
