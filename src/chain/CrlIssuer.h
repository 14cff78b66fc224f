#pragma once

#include "chain/ChainValidator.h"

namespace norvane {

/// A base CRL under test and, once it is found, the certificate that signed it.
struct CRLChainItem {
    explicit CRLChainItem(const CRLItem& crl) : item(crl) {}

    const CRLItem& item;
    CRLCacheInfo info;
};

/// Looks for the certificate that signed the CRL and for its path to a trust anchor. On true
/// crl.info.crl_issuer is set and the path stands in chain.path, in front of what was there; on
/// false chain.path holds the path that failed least badly, if any did.
///
/// Each call searches anew. What a candidate throws costs that candidate only; the search itself
/// throws as the accessors of the CRL do.
[[nodiscard]] bool find_crl_issuer(ChainValidator& chain, CRLChainItem& crl);

} // namespace norvane
