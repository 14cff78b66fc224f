#pragma once

#include "chain/ChainValidator.h"
#include "chain/IssuerCandidates.h"

#include <vector>

namespace norvane {

// The gathering of every CRL that could speak about a certificate. Nothing is judged here but the
// name and the key identifier. All throw as the accessors of items do: a corrupt CRL that a search
// meets ends it.

/// A key for each cRLIssuer of the certificate's distribution points, in their order, and one for
/// the certificate's issuer at the end if a point has no cRLIssuer. No keys without the extension.
///
/// The name of a cRLIssuer stays the GeneralNames that it is, of which crl_search can make no name:
/// a certificate with one cannot be checked.
[[nodiscard]] std::vector<IssuerSearchKey> crl_search_keys(const CertificateItem& certificate);

/// Adds the CRLs that any of the keys finds, in the stores, then in extra_crls, then in the run's
/// cache. Only where two delta CRLs have the same thisUpdate does the order matter: the first
/// stays.
void crl_search(ChainValidator& chain, const std::vector<IssuerSearchKey>& keys, CrlBaseSet& base,
                DeltaCrlMap& deltas);

/// Enters a delta CRL under its authority key identifier and issuing distribution point, any other
/// in the base set.
void file_crl(const CRLItem& crl, CrlBaseSet& base, DeltaCrlMap& deltas);

/// Whether the CRL has the key's name and, unless that is empty, its key identifier.
[[nodiscard]] bool crl_matches_key(const CRLItem& crl, const IssuerSearchKey& key);

} // namespace norvane
