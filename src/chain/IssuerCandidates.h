#pragma once

#include "chain/ChainValidator.h"

#include <cstdint>
#include <string>
#include <vector>

namespace norvane {

/// What a certificate or a CRL says about its issuer.
struct IssuerSearchKey {
    CACMPT_CERT_NAME issuer;
    CACMPT_BLOB key_id; ///< keyIdentifier of the authority key identifier, empty if absent.
    std::string serial; ///< Text of authorityCertSerialNumber, empty if absent.
    /// A certificate whose verified issuers are to be preferred, or null.
    const ItemCache::value_type* anchor = nullptr;
};

/// Both throw as the accessors of items do.
[[nodiscard]] IssuerSearchKey make_issuer_key(const CertificateItem& certificate);
[[nodiscard]] IssuerSearchKey make_crl_issuer_key(const CRLItem& crl);

/// Whether the certificate may be the issuer that is sought. The key identifier alone decides if
/// the key has one; the name, otherwise.
[[nodiscard]] bool matches_key(const IssuerSearchKey& key, const CertificateItem& certificate);

struct IssuerCandidate {
    std::int32_t score;
    ItemCache::value_type* certificate;
};

/// A search for an issuer and what it has found, best score first and in order of discovery within
/// a score. What it refers to must outlive it.
class IssuerCandidateSearch {
  public:
    IssuerCandidateSearch(const IssuerSearchKey& key, const CertificateItemSet& excluded)
        : key_(key), excluded_(excluded) {}

    [[nodiscard]] const IssuerSearchKey& key() const { return key_; }
    [[nodiscard]] const std::vector<IssuerCandidate>& candidates() const { return candidates_; }

    /// The rank of a candidate, from 0; -1 rejects it.
    [[nodiscard]] std::int32_t score_candidate(const ItemCache::value_type& certificate) const;
    /// Enters the candidate unless its score rejects it.
    void add_candidate(ItemCache::value_type& certificate);

  private:
    const IssuerSearchKey& key_;
    const CertificateItemSet& excluded_;
    std::vector<IssuerCandidate> candidates_;
};

// The sources of candidates, in the order in which they are asked. What a certificate or a store
// throws costs that certificate or store only.

/// Every certificate that the run has met.
void candidates_from_cache(ChainValidator& chain, IssuerCandidateSearch& search);
void candidates_from_extra(ChainValidator& chain, IssuerCandidateSearch& search);
/// The certificates of all stores, which enter the run's cache; those of a Root store are trusted.
/// Only here does the key's serial number count, and only where no key identifier does.
void candidates_from_stores(ChainValidator& chain, IssuerCandidateSearch& search);

} // namespace norvane
