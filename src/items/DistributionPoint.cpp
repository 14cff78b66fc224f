#include "items/DistributionPoint.h"

#include "values/EncodeValue.h"
#include "values/Exceptions.h"

namespace norvane {

DistributionPointList make_distribution_points(const ASN1T_CRLDistributionPoints& points) {
    DistributionPointList list;
    list.reserve(points.elements.count);
    for (ASN1T_DistributionPoint& point : points.elements) {
        DistributionPointItem& item = list.emplace_back();
        if (point.m.cRLIssuerPresent) {
            item.crl_issuer_names.emplace(
                encode_value(point.cRLIssuer, source_module::chain_base, __LINE__));
        }
        if (point.m.distributionPointPresent) {
            item.distribution_point =
                encode_value(point.distributionPoint, source_module::chain_base, __LINE__);
        }
        if (point.m.reasonsPresent) {
            item.reasons = point.reasons.first_octet();
        }
    }
    return list;
}

} // namespace norvane
