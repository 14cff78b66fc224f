#include "chain/CrlRetrieval.h"

#include "chain/CrlSearch.h"
#include "chain/RecordParts.h"
#include "chain/Retrieval.h"
#include "chain/RetrievalClock.h"
#include "chain/UrlName.h"
#include "store/StoreUtil.h"
#include "values/EncodeValue.h"

#include <string>

namespace norvane {
namespace {

void take_crls_from_store(ChainValidator& chain, HCERTSTORE store, CrlItemSet& out) {
    const CACMPT_BLOB any_issuer;
    CrlFindByIssuer all(any_issuer);
    store_visit_crls(store, all, [&](ByteView encoded) {
        out.insert(&cache_crl(chain.crl_item_cache, encoded, CRLCacheInfo()).first);
    });
}

/// Charges what has passed since `start` to the budget, if the retrievals share one.
void charge_time(ChainValidator& chain, const CACMPT_Date& start) {
    if ((chain.chain_flags & chain_accumulative_timeout) != 0) {
        add_to(chain.timeout_spent, time_since(start));
    }
}

void retrieve_url(ChainValidator& chain, const std::string& url, DWORD flags, CrlItemSet& out) {
    const bool accumulative = (chain.chain_flags & chain_accumulative_timeout) != 0;
    const bool allowed = !accumulative || chain.retrieval_timeout > chain.timeout_spent;
    const CACMPT_Date start = retrieval_clock();
    CACMPT_Date remaining = chain.retrieval_timeout;
    if (allowed) {
        subtract_from(remaining, chain.timeout_spent);
    }

    if (allowed && !chain.retrieved_urls.contains(url)) {
        const RetrievedStore store =
            retrieve_store(url, CONTEXT_OID_CRL, flags, whole_milliseconds(remaining));
        if (store.handle() != nullptr) {
            // A retrieval that succeeds is deliberately charged twice, here and with its reading.
            charge_time(chain, start);
            take_crls_from_store(chain, store.handle(), out);
        }
    } else {
        note(allowed ? event::url_asked_already : event::budget_spent, record_value("url", url));
        SetLastError(0);
    }
    charge_time(chain, start);
    chain.retrieved_urls.insert(url);
}

} // namespace

void retrieve_crls_for_certificate(ChainValidator& chain, const CertificateItem& certificate,
                                   CrlBaseSet& base, DeltaCrlMap& deltas, DWORD pass_flags) {
    CrlItemSet retrieved;
    if (const auto* const points = certificate.crl_distribution_points()) {
        const Branch branch(event::crl_urls);
        retrieve_crls(chain, *points, retrieved, pass_flags);
    }
    if (const auto* const points = certificate.freshest_crl()) {
        const Branch branch(event::delta_urls);
        retrieve_crls(chain, *points, retrieved, pass_flags);
    }
    for (const CRLItem* const crl : retrieved) {
        file_crl(*crl, base, deltas);
    }
}

void retrieve_crls(ChainValidator& chain, const DistributionPointList& points, CrlItemSet& out,
                   DWORD pass_flags) {
    DWORD flags = pass_flags & CRYPT_CACHE_ONLY_RETRIEVAL;
    if ((chain.chain_flags & chain_cache_only) != 0) {
        flags |= CRYPT_CACHE_ONLY_RETRIEVAL;
    }
    for (const DistributionPointItem& point : points) {
        if (!point.distribution_point) {
            continue;
        }
        const CACMPT_BLOB& encoded = *point.distribution_point;
        ASN1T_DistributionPointName name;
        decode_value({encoded.data, encoded.length}, name, source_module::chain, __LINE__);
        if (name.t != ASN1T_DistributionPointName::fullName_chosen) {
            continue;
        }
        for (const ASN1T_GeneralName& full_name : name.fullName.elements) {
            if (full_name.t == ASN1T_GeneralName::uniformResourceIdentifier) {
                retrieve_url(chain, url_text(full_name), flags, out);
            }
        }
    }
}

} // namespace norvane
