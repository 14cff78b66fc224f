#include "items/ItemCache.h"

namespace norvane {

ItemCache::value_type& cache_certificate(ItemCache& map, ByteView encoded,
                                         const CertificateCacheInfo& info) {
    return detail::merge_trust(
        detail::enter(map, encoded, info,
                      [=] { return CertificateItem(CACMPT_BLOB(encoded.data, encoded.length)); }),
        info);
}

CrlItemCache::value_type& cache_crl(CrlItemCache& map, ByteView encoded, const CRLCacheInfo& info) {
    return detail::enter(map, encoded, info,
                         [=] { return CRLItem(CACMPT_BLOB(encoded.data, encoded.length)); });
}

} // namespace norvane
