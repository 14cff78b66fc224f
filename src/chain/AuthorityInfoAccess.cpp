#include "chain/AuthorityInfoAccess.h"

#include "call/Question.h"
#include "chain/RecordParts.h"
#include "chain/Retrieval.h"
#include "chain/RetrievalClock.h"
#include "chain/UrlName.h"
#include "store/StoreUtil.h"
#include "values/ObjectIdentifierText.h"

#include <list>

namespace norvane {
namespace {

constexpr const char* id_ad_ca_issuers = "1.3.6.1.5.5.7.48.2";

void candidates_from_retrieved_store(ChainValidator& chain, const StoreHandle& store,
                                     IssuerCandidateSearch& search) {
    std::list<CACMPT_BLOB> found;
    CertFindByIssuerSubStrAndSerial all;
    store_find_all(found, store.handle(), all);
    for (CACMPT_BLOB& encoded : found) {
        ItemCache::value_type& certificate = cache_certificate(
            chain.item_cache, CertificateItem(std::move(encoded)), CertificateCacheInfo());
        if (matches_key(search.key(), certificate.first)) {
            search.add_candidate(certificate);
        } else {
            note(event::retrieved_candidate_differs, told(certificate.first));
        }
    }
}

void candidates_from_url(ChainValidator& chain, const ASN1T_GeneralName& location,
                         IssuerCandidateSearch& search, DWORD retrieval_flags) {
    if (location.t != ASN1T_GeneralName::uniformResourceIdentifier) {
        return;
    }
    DWORD flags = retrieval_flags;
    if ((chain.chain_flags & ChainFlagCacheOnlyUrl) != 0) {
        flags |= CRYPT_CACHE_ONLY_RETRIEVAL;
    }
    // Each URL has the whole time-out, and none of it is charged to timeout_spent.
    RetrievedStore retrieved = retrieve_store(url_text(location), CONTEXT_OID_CERTIFICATE, flags,
                                              whole_milliseconds(chain.retrieval_timeout));
    if (retrieved.handle() == nullptr) {
        return;
    }
    const StoreHandle store(retrieved.handle());
    // The reference that came with the retrieval stays behind, so that the platform's shared store
    // of this URL is still there when it is asked for again.
    leave_behind(retrieved.release());
    candidates_from_retrieved_store(chain, store, search);
}

} // namespace

void candidates_from_aia(ChainValidator& chain, const ASN1T_AuthorityInfoAccessSyntax& aia,
                         IssuerCandidateSearch& search, DWORD retrieval_flags) {
    const Branch branch(event::issuer_urls);
    for (const ASN1T_AccessDescription& description : aia.elements) {
        if (description.accessMethod == str_to_oid(id_ad_ca_issuers)) {
            candidates_from_url(chain, description.accessLocation, search, retrieval_flags);
        }
    }
}

} // namespace norvane
