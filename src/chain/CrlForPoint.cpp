#include "chain/CrlForPoint.h"

#include "chain/CrlIssuer.h"
#include "chain/DeltaSelection.h"
#include "chain/RecordParts.h"

namespace norvane {
namespace {

constexpr std::uint32_t remove_from_crl = 8; // CRLReason, RFC 5280 5.3.1.

/// An indirect CRL is accepted only through a point that names its issuer. Without such a name the
/// CRL's issuer is the certificate's, and indirectCRL does not matter.
bool issuer_fits(const CertificateItem& certificate, const CRLItem& crl,
                 const DistributionPointItem* point) {
    if (point != nullptr && point->crl_issuer_names) {
        if (!names_equal(crl.issuer_name(), *point->crl_issuer_names)) {
            return fails(event::crl_issuer_differs, told(crl),
                         record_value("cRLIssuer", *point->crl_issuer_names));
        }
        const ASN1T_IssuingDistributionPoint* const idp = crl.issuing_distribution_point();
        return (idp != nullptr && idp->indirectCRL) || fails(event::crl_not_indirect, told(crl));
    }
    return names_equal(crl.issuer_name(), certificate.issuer_name()) ||
           fails(event::crl_issuer_differs, told(crl),
                 record_value("issuer", certificate.issuer_name()));
}

/// Whether the CRL's distribution point is the certificate's, by their DER bytes and never by
/// single names. A cRLIssuer stands in for a point without a name of its own.
bool point_name_fits(const CRLItem& crl, const DistributionPointItem* point) {
    const CACMPT_BLOB name = crl.idp_distribution_point_name();
    if (name.length == 0) {
        return true;
    }
    if (point == nullptr) {
        return false;
    }
    if (point->distribution_point) {
        return name == *point->distribution_point;
    }
    return point->crl_issuer_names && name == point->crl_issuer_names->canonical();
}

bool issuing_distribution_point_fits(const CertificateItem& certificate, const CRLItem& crl,
                                     const DistributionPointItem* point) {
    const ASN1T_IssuingDistributionPoint* const idp = crl.issuing_distribution_point();
    if (idp == nullptr) {
        return true;
    }
    if (!point_name_fits(crl, point)) {
        return fails(event::distribution_point_differs, told(crl));
    }
    const ASN1T_BasicConstraints* const constraints = certificate.basic_constraints();
    const bool is_ca = constraints != nullptr && constraints->cA;
    if (idp->onlyContainsUserCerts && is_ca) {
        return fails(event::crl_only_for_users, told(crl));
    }
    return !(idp->onlyContainsCACerts && !is_ca) || fails(event::crl_only_for_cas, told(crl));
}

/// The reasons for which this CRL speaks through this point.
std::uint8_t reasons_of(const CRLItem& crl, const DistributionPointItem* point) {
    const ASN1T_IssuingDistributionPoint* const idp = crl.issuing_distribution_point();
    const bool idp_has_reasons = idp != nullptr && idp->m.onlySomeReasonsPresent;
    const bool point_has_reasons = point != nullptr && point->reasons;
    if (idp_has_reasons && point_has_reasons) {
        return crl.idp_only_some_reasons() & *point->reasons;
    }
    if (idp_has_reasons) {
        return crl.idp_only_some_reasons();
    }
    return point_has_reasons ? *point->reasons : all_reasons;
}

/// An entry in the delta hides the base CRL's.
std::uint32_t find_reason(const CertificateItem& certificate, const CRLItem& crl,
                          const CRLItem* delta) {
    const std::string serial = certificate.decoded()->tbsCertificate.serialNumber.text();
    const std::uint32_t delta_reason =
        delta == nullptr ? entry_not_found : delta->find_entry_reason(serial);
    return delta_reason == entry_not_found ? crl.find_entry_reason(serial) : delta_reason;
}

} // namespace

RunStatus check_crl_for_point(ChainValidator& chain, CertificateChainItem& certificate,
                              const CRLItem& crl, const DeltaCrlSet& deltas_for_crl,
                              const DistributionPointItem* point, std::uint8_t& covered_reasons) {
    const CertificateItem& subject = certificate.item();
    if (!issuer_fits(subject, crl, point) ||
        !issuing_distribution_point_fits(subject, crl, point)) {
        return CHAIN_STATUS_GOOD;
    }
    const DeltaCrlSet deltas = same_scope_deltas(deltas_for_crl, crl);

    const std::uint8_t reasons = reasons_of(crl, point);
    if ((reasons & ~covered_reasons) == 0) {
        note(event::reasons_nothing_new, told(crl), record_value("reasons", Reasons{reasons}),
             record_value("covered", Reasons{covered_reasons}));
        return CHAIN_STATUS_GOOD;
    }

    CRLChainItem signed_crl(crl);
    if (!find_crl_issuer(chain, signed_crl)) {
        return CHAIN_STATUS_GOOD;
    }
    const CRLItem* const delta = first_signed_delta(chain, deltas, *signed_crl.info.crl_issuer);
    const bool needs_delta = crl.freshest_crl() != nullptr || subject.freshest_crl() != nullptr;
    if (needs_delta && delta == nullptr) {
        note(event::delta_missing, told(crl));
        return CHAIN_STATUS_GOOD;
    }

    const std::uint32_t reason = find_reason(subject, crl, delta);
    CertificateCacheInfo& info = certificate.info();
    info.crl_pairs.emplace(&crl, delta);
    if (reason != entry_not_found) {
        info.deciding_base_crl = &crl;
        info.deciding_delta_crl = delta;
    }
    if (reason != remove_from_crl && reason != entry_not_found) {
        note(event::certificate_listed, told(crl), record_value("reason", reason));
        return reason;
    }
    if (reason == remove_from_crl) {
        note(event::certificate_released, told(crl));
    }
    covered_reasons |= reasons;
    note(event::reasons_contributed, told(crl), record_value("reasons", Reasons{reasons}),
         record_value("covered", Reasons{covered_reasons}));
    return CHAIN_STATUS_GOOD;
}

} // namespace norvane
