#include "chain/RevocationDecision.h"

#include "chain/CrlForPoint.h"
#include "chain/CrlSearch.h"
#include "chain/DeltaSelection.h"
#include "chain/LinkTests.h"
#include "chain/RecordParts.h"
#include "values/CompareTimes.h"
#include "values/ProcessFailure.h"

#include <cstdint>
#include <optional>

namespace norvane {
namespace {

/// The first gate of a base CRL. It wants the very key that signed the certificate if the CRL says
/// so, or else if its CA has had several keys.
bool key_gate_is_wanted(const CRLItem& crl) {
    switch (crl.crl_kind()) {
    case 0:
        return true;
    case 1:
        return false;
    default:
        return crl.ca_version() != nullptr;
    }
}

bool is_current(const CRLItem& crl, ASN1CUTCTime& time) {
    if (compare_times(next_update(crl), time) < 0) {
        return fails(event::crl_expired, told(crl), record_value("nextUpdate", next_update(crl)),
                     record_value("time", time));
    }
    return compare_times(this_update(crl), time) <= 0 ||
           fails(event::crl_not_yet_valid, told(crl), record_value("thisUpdate", this_update(crl)),
                 record_value("time", time));
}

bool crl_is_usable(ChainValidator& chain, const CertificateItem& issuer, const CRLItem& crl,
                   bool needs_delta) {
    // Where a delta is needed its times count, and the base CRL may be long expired.
    if (!needs_delta && !is_current(crl, chain.verify_time)) {
        return false;
    }
    return !key_gate_is_wanted(crl) || chain.verified_crls.verify(crl, issuer) ||
           fails(event::crl_not_by_key_of_issuer, told(crl), told(issuer, "issuer"));
}

/// The delta CRLs to consult with a base CRL; nothing if the CRL is to be passed over.
std::optional<DeltaCrlSet> deltas_of_usable_crl(ChainValidator& chain,
                                                const CertificateItem& certificate,
                                                const CertificateItem& issuer, const CRLItem& crl,
                                                DeltaCrlMap& deltas, DWORD pass_flags) {
    const bool needs_delta = certificate.freshest_crl() != nullptr || crl.freshest_crl() != nullptr;
    if (!crl_is_usable(chain, issuer, crl, needs_delta)) {
        return std::nullopt;
    }
    if (!needs_delta) {
        return DeltaCrlSet();
    }
    DeltaCrlSet selected = select_deltas(chain, crl, deltas, pass_flags);
    if (selected.empty()) {
        note(event::delta_missing, told(crl));
        return std::nullopt;
    }
    return selected;
}

RunStatus check_distribution_points(ChainValidator& chain, CertificateChainItem& certificate,
                                    const CRLItem& crl, const DeltaCrlSet& deltas_for_crl,
                                    std::uint8_t& covered_reasons) {
    RunStatus status = CHAIN_STATUS_GOOD;
    for (const DistributionPointItem& point : *certificate.item().crl_distribution_points()) {
        if (covered_reasons == all_reasons || status != CHAIN_STATUS_GOOD) {
            break;
        }
        const Branch branch(event::point, told(point));
        contain_fault( // It costs this point only.
            [&] {
                status = check_crl_for_point(chain, certificate, crl, deltas_for_crl, &point,
                                             covered_reasons);
            },
            [&] { note(event::point_faulty, told(crl), told_fault()); });
    }
    return status;
}

} // namespace

RunStatus crl_status_decision(ChainValidator& chain, CertificateChainItem& certificate,
                              const CertificateItem& issuer, const CrlBaseSet& base,
                              DeltaCrlMap& deltas, const CrlItemSet& used, DWORD pass_flags) {
    std::uint8_t covered_reasons = 0;
    RunStatus status = CHAIN_STATUS_GOOD;
    const CertificateItem& subject = certificate.item();
    const bool has_points = subject.crl_distribution_points() != nullptr;
    const auto is_open = [&] {
        return covered_reasons != all_reasons && status == CHAIN_STATUS_GOOD;
    };

    // Stage A: the CRLs gathered, through the certificate's distribution points.
    Branch stage(event::distribution_points, told_count("CRLs", base));
    for (auto crl = base.begin(); crl != base.end() && has_points && is_open(); ++crl) {
        const Branch branch(event::crl, told(**crl));
        contain_fault( // It costs this CRL only.
            [&] {
                if (const auto crl_deltas =
                        deltas_of_usable_crl(chain, subject, issuer, **crl, deltas, pass_flags)) {
                    status = check_distribution_points(chain, certificate, **crl, *crl_deltas,
                                                       covered_reasons);
                }
            },
            [&] { note(event::crl_faulty, told(**crl), told_fault()); });
    }
    stage.end(is_open() ? event::reasons_not_covered : event::decided,
              record_value("covered", Reasons{covered_reasons}));
    if (covered_reasons == all_reasons && status == CHAIN_STATUS_GOOD) {
        certificate.info().good_crls = used;
        certificate.info().revocation_good = true;
    }

    // Stage B: the CRLs of the certificate's issuer without any point. It starts from nothing, its
    // exceptions are those of the decision, and it does not make the certificate good for later.
    if (is_open()) {
        IssuerSearchKey key;
        key.issuer = subject.issuer_name();
        CrlBaseSet issuer_crls;
        crl_search(chain, {key}, issuer_crls, deltas);
        covered_reasons = 0;
        if (issuer_crls.empty()) {
            note(event::crl_missing, record_value("issuer", key.issuer));
        }
        Branch without_points(event::crls_of_the_issuer, told_count("CRLs", issuer_crls));
        for (auto crl = issuer_crls.begin(); crl != issuer_crls.end() && is_open(); ++crl) {
            const Branch branch(event::crl, told(**crl));
            if (const auto crl_deltas =
                    deltas_of_usable_crl(chain, subject, issuer, **crl, deltas, pass_flags)) {
                status = check_crl_for_point(chain, certificate, **crl, *crl_deltas, nullptr,
                                             covered_reasons);
            }
        }
        without_points.end(is_open() ? event::reasons_not_covered : event::decided,
                           record_value("covered", Reasons{covered_reasons}));
    }

    if (covered_reasons == all_reasons) {
        return status;
    }
    return status == CHAIN_STATUS_GOOD ? CHAIN_STATUS_NO_CHECK : status;
}

} // namespace norvane
