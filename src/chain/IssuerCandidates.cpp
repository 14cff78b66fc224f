#include "chain/IssuerCandidates.h"

#include "chain/RecordParts.h"
#include "store/StoreUtil.h"
#include "values/IntegerText.h"
#include "values/ProcessFailure.h"

#include <algorithm>
#include <list>

namespace norvane {
namespace {

constexpr std::int32_t rejected = -1;
constexpr std::int32_t anchor_score = 10;         ///< A trust anchor.
constexpr std::int32_t verified_issuer_score = 5; ///< Accepted as this issuer before.
constexpr std::int32_t revocation_good_score = 3; ///< Found good earlier in this run.

/// The certificates of a store that may be the issuer, as far as a store can tell.
std::list<CACMPT_BLOB> find_in_store(const StoreHandle& store, const IssuerSearchKey& key) {
    std::list<CACMPT_BLOB> found;
    if (key.key_id.length != 0) {
        CertFindByKeyIdentifier param({key.key_id.data, key.key_id.length});
        store_find_all(found, store.handle(), param);
    } else {
        const CACMPT_BLOB& name = key.issuer.canonical();
        CertFindBySubjectAndSerial param;
        param.name = {name.data, name.length};
        if (!key.serial.empty()) {
            integer_text_to_blob(key.serial, param.serial);
        }
        store_find_all(found, store.handle(), param);
    }
    return found;
}

void take_from_store(ChainValidator& chain, CACMPT_BLOB encoded, const CertificateCacheInfo& info,
                     IssuerCandidateSearch& search) {
    contain_fault(
        [&] {
            search.add_candidate(
                cache_certificate(chain.item_cache, CertificateItem(std::move(encoded)), info));
        },
        [] { note(event::candidate_faulty, told_fault()); });
}

void add_if_match(ItemCache::value_type& certificate, IssuerCandidateSearch& search) {
    contain_fault(
        [&] {
            if (matches_key(search.key(), certificate.first)) {
                search.add_candidate(certificate);
            }
        },
        [&] { note(event::candidate_faulty, told(certificate.first), told_fault()); });
}

} // namespace

IssuerSearchKey make_issuer_key(const CertificateItem& certificate) {
    return {certificate.issuer_name(), certificate.authority_key_id(),
            certificate.authority_cert_serial()};
}

IssuerSearchKey make_crl_issuer_key(const CRLItem& crl) {
    return {crl.issuer_name(), crl.authority_key_id(), crl.authority_cert_serial()};
}

bool matches_key(const IssuerSearchKey& key, const CertificateItem& certificate) {
    return key.key_id.length != 0 ? certificate.subject_key_identifier() == key.key_id
                                  : names_equal(key.issuer, certificate.subject_name());
}

std::int32_t
IssuerCandidateSearch::score_candidate(const ItemCache::value_type& certificate) const {
    const auto& [item, info] = certificate;
    const bool self_signed = item.is_self_signed();
    // Kept whatever else holds, so that the branch that takes it leaves its record.
    if (self_signed && !info.trusted) {
        return 0;
    }
    if (excluded_.contains(&item)) {
        note(event::candidate_on_path_already, told(item));
        return rejected;
    }
    std::int32_t score = 0;
    if (self_signed) {
        score += anchor_score;
    }
    if (key_.anchor != nullptr && key_.anchor->second.verified_issuers.contains(&item)) {
        score += verified_issuer_score;
    }
    if (info.revocation_good) {
        score += revocation_good_score;
    }
    const bool known = std::ranges::any_of(candidates_, [&](const IssuerCandidate& candidate) {
        return candidate.certificate == &certificate && candidate.score >= score;
    });
    return known ? rejected : score;
}

void IssuerCandidateSearch::add_candidate(ItemCache::value_type& certificate) {
    const std::int32_t score = score_candidate(certificate);
    if (score < 0) {
        return;
    }
    const auto behind_its_equals = std::ranges::upper_bound(
        candidates_, score, std::ranges::greater(), &IssuerCandidate::score);
    candidates_.insert(behind_its_equals, {score, &certificate});
}

void candidates_from_cache(ChainValidator& chain, IssuerCandidateSearch& search) {
    for (ItemCache::value_type& certificate : chain.item_cache) {
        add_if_match(certificate, search);
    }
}

void candidates_from_extra(ChainValidator& chain, IssuerCandidateSearch& search) {
    for (ItemCache::value_type* const certificate : chain.extra_certificates) {
        add_if_match(*certificate, search);
    }
}

void candidates_from_stores(ChainValidator& chain, IssuerCandidateSearch& search) {
    for (const StoreHandle& store : chain.cert_stores) {
        CertificateCacheInfo info;
        info.trusted = store.is_root();
        // A fault of a certificate costs that certificate, and one of the search the store.
        contain_fault(
            [&] {
                std::list<CACMPT_BLOB> found = find_in_store(store, search.key());
                note(event::source_searched, told(store),
                     record_value("found", static_cast<std::uint64_t>(found.size())));
                for (CACMPT_BLOB& encoded : found) {
                    take_from_store(chain, std::move(encoded), info, search);
                }
            },
            [&] { note(event::store_faulty, told(store), told_fault()); });
    }
}

} // namespace norvane
