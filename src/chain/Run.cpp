#include "chain/Run.h"

#include "chain/CertificateIssuer.h"
#include "chain/CrlRetrieval.h"
#include "chain/CrlSearch.h"
#include "chain/RecordParts.h"
#include "chain/RevocationDecision.h"

namespace norvane {

RunStatus verify(ChainValidator& chain, const CertificateItem& item, CertificateCacheInfo& result) {
    CertificateChainItem certificate(
        cache_certificate(chain.item_cache, item, CertificateCacheInfo()));
    const RunStatus status = run(chain, certificate);
    result = certificate.info();
    return status;
}

RunStatus run(ChainValidator& chain, CertificateChainItem& certificate) {
    CrlBaseSet base_crls;
    CrlItemSet used_crls;
    DeltaCrlMap delta_crls;

    const CertificateItem* const issuer = resolve_issuer(chain, certificate.item());
    if (issuer == nullptr) {
        return CHAIN_STATUS_NO_CHECK;
    }

    crl_search(chain, crl_search_keys(certificate.item()), base_crls, delta_crls);
    chain.retrieved_urls.clear();

    const auto pass = [&](DWORD pass_flags) {
        const Branch branch(pass_flags == 0 ? event::pass_over_the_network
                                            : event::pass_over_the_cache);
        retrieve_crls_for_certificate(chain, certificate.item(), base_crls, delta_crls, pass_flags);
        return crl_status_decision(chain, certificate, *issuer, base_crls, delta_crls, used_crls,
                                   pass_flags);
    };

    const RunStatus cached_status = pass(CRYPT_CACHE_ONLY_RETRIEVAL);
    if (cached_status == CHAIN_STATUS_GOOD) {
        return cached_status;
    }
    chain.path.items.clear();
    chain.path.path_status = 0;
    used_crls.clear();
    chain.retrieved_urls.clear();

    return pass(0);
}

} // namespace norvane
