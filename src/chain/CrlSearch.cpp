#include "chain/CrlSearch.h"

#include "chain/RecordParts.h"
#include "store/StoreUtil.h"

namespace norvane {
namespace {

IssuerSearchKey key_for_name(const CACMPT_CERT_NAME& name) {
    IssuerSearchKey key;
    key.issuer = name;
    return key;
}

void file_from_stores(ChainValidator& chain, StoreFindParam<_CRL_CONTEXT>& param, CrlBaseSet& base,
                      DeltaCrlMap& deltas) {
    std::vector<const CRLItem*> found;
    for (const StoreHandle& store : chain.crl_stores) {
        const std::size_t before = found.size();
        store_visit_crls(store.handle(), param, [&](ByteView encoded) {
            found.push_back(&cache_crl(chain.crl_item_cache, encoded, CRLCacheInfo()).first);
        });
        note(event::source_searched, told(store),
             record_value("found", static_cast<std::uint64_t>(found.size() - before)));
    }
    for (const CRLItem* const crl : found) {
        file_crl(*crl, base, deltas);
    }
}

} // namespace

std::vector<IssuerSearchKey> crl_search_keys(const CertificateItem& certificate) {
    std::vector<IssuerSearchKey> keys;
    const DistributionPointList* const points = certificate.crl_distribution_points();
    if (points == nullptr) {
        return keys;
    }
    for (const DistributionPointItem& point : *points) {
        if (point.crl_issuer_names) {
            note(event::point_names_crl_issuer, record_value("cRLIssuer", *point.crl_issuer_names));
            keys.push_back(key_for_name(*point.crl_issuer_names));
        }
    }
    if (keys.size() < points->size()) {
        keys.push_back(key_for_name(certificate.issuer_name()));
    }
    return keys;
}

void crl_search(ChainValidator& chain, const std::vector<IssuerSearchKey>& keys, CrlBaseSet& base,
                DeltaCrlMap& deltas) {
    for (const IssuerSearchKey& key : keys) {
        const Branch branch(event::crl_search, record_value("issuer", key.issuer));
        const CACMPT_BLOB& name = key.issuer.canonical();
        if (key.key_id.length != 0) {
            CrlFindByIssuerKeyId param(name, key.key_id);
            file_from_stores(chain, param, base, deltas);
        } else {
            CrlFindByIssuer param(name);
            file_from_stores(chain, param, base, deltas);
        }
        for (const CRLItem* const crl : chain.extra_crls) {
            if (crl_matches_key(*crl, key)) {
                file_crl(*crl, base, deltas);
            }
        }
        for (const auto& [crl, info] : chain.crl_item_cache) {
            if (crl_matches_key(crl, key)) {
                file_crl(crl, base, deltas);
            }
        }
    }
}

void file_crl(const CRLItem& crl, CrlBaseSet& base, DeltaCrlMap& deltas) {
    if (crl.delta_crl_indicator()) {
        if (deltas[crl.authority_key_id()][crl.idp_raw()].insert(&crl).second) {
            note(event::delta_gathered, told(crl));
        }
    } else if (base.insert(&crl).second) {
        note(event::crl_gathered, told(crl));
    }
}

bool crl_matches_key(const CRLItem& crl, const IssuerSearchKey& key) {
    return names_equal(crl.issuer_name(), key.issuer) &&
           (key.key_id.length == 0 || crl.authority_key_id() == key.key_id);
}

} // namespace norvane
