#pragma once

#include "items/CRLItem.h"
#include "items/CertificateItem.h"
#include "values/ASN1Blob.h"

#include <map>
#include <set>
#include <utility>

namespace norvane {

/// Orders items of one cache by when they were first entered. Pointers into a cache are equal
/// exactly if the bytes are; their order decides the order of every search, so it must not hang on
/// where the memory happened to be. Null comes first.
struct DiscoveryOrder {
    template <class Item>
    [[nodiscard]] bool operator()(const Item* a, const Item* b) const {
        return place(a) < place(b);
    }

    /// Pairs of base and delta CRL: by base, then by delta.
    [[nodiscard]] bool operator()(const std::pair<const CRLItem*, const CRLItem*>& a,
                                  const std::pair<const CRLItem*, const CRLItem*>& b) const {
        return std::pair(place(a.first), place(a.second)) <
               std::pair(place(b.first), place(b.second));
    }

  private:
    template <class Item>
    [[nodiscard]] static std::uint32_t place(const Item* item) {
        return item == nullptr ? 0 : item->discovery();
    }
};

/// Newest thisUpdate first. A CRL with the same thisUpdate as one in the set is not inserted.
struct NewestFirst {
    [[nodiscard]] bool operator()(const CRLItem* a, const CRLItem* b) const {
        return crl_time_less(a, b);
    }
};

/// By length first, then by bytes.
struct BlobOrder {
    [[nodiscard]] bool operator()(const CACMPT_BLOB& a, const CACMPT_BLOB& b) const {
        return blob_less(a, b);
    }
};

using CertificateItemSet = std::set<const CertificateItem*, DiscoveryOrder>;
using CrlItemSet = std::set<const CRLItem*, DiscoveryOrder>;
/// Pairs of a base CRL and the delta CRL consulted with it, or null.
using CrlPairSet = std::set<std::pair<const CRLItem*, const CRLItem*>, DiscoveryOrder>;

/// The base CRLs that a run has gathered.
using CrlBaseSet = CrlItemSet;
using DeltaCrlSet = std::set<const CRLItem*, NewestFirst>;
/// Delta CRLs by authority key identifier, then by the raw issuing distribution point.
using DeltaCrlMap = std::map<CACMPT_BLOB, std::map<CACMPT_BLOB, DeltaCrlSet, BlobOrder>, BlobOrder>;

} // namespace norvane
