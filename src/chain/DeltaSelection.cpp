#include "chain/DeltaSelection.h"

#include "chain/CrlRetrieval.h"
#include "chain/CrlSearch.h"
#include "chain/LinkTests.h"
#include "chain/RecordParts.h"
#include "values/CompareTimes.h"

#include <optional>

namespace norvane {

DeltaCrlSet select_deltas(ChainValidator& chain, const CRLItem& crl, DeltaCrlMap& deltas,
                          DWORD pass_flags) {
    if (const DistributionPointList* const points = crl.freshest_crl()) {
        const Branch branch(event::delta_urls);
        CrlItemSet retrieved;
        retrieve_crls(chain, *points, retrieved, pass_flags);
        CrlBaseSet dropped;
        for (const CRLItem* const item : retrieved) {
            file_crl(*item, dropped, deltas);
        }
    }
    const DeltaCrlSet& candidates = deltas[crl.authority_key_id()][crl.idp_raw()];
    const std::optional<std::uint32_t> base_number = crl.crl_number();
    DeltaCrlSet result;
    if (!base_number) {
        note(event::crl_number_missing, told(crl));
        return result;
    }
    for (const CRLItem* const delta : candidates) {
        if (delta_applies(*delta, *base_number, chain.verify_time)) {
            note(event::delta_selected, told(*delta, "delta"));
            result.insert(result.end(), delta);
        }
    }
    return result;
}

bool delta_applies(const CRLItem& delta, std::uint32_t base_number, ASN1CUTCTime& verify_time) {
    const std::optional<std::uint32_t> starts_at = delta.delta_crl_indicator();
    const std::optional<std::uint32_t> number = delta.crl_number();
    if (!starts_at || !number || base_number < *starts_at || base_number >= *number) {
        return fails(event::delta_of_other_base, told(delta, "delta"),
                     record_value("base cRLNumber", base_number),
                     record_value("BaseCRLNumber", starts_at), record_value("cRLNumber", number));
    }
    if (compare_times(next_update(delta), verify_time) < 0) {
        return fails(event::delta_expired, told(delta, "delta"),
                     record_value("nextUpdate", next_update(delta)),
                     record_value("time", verify_time));
    }
    return compare_times(this_update(delta), verify_time) <= 0 ||
           fails(event::delta_not_yet_valid, told(delta, "delta"),
                 record_value("thisUpdate", this_update(delta)), record_value("time", verify_time));
}

DeltaCrlSet same_scope_deltas(const DeltaCrlSet& deltas, const CRLItem& crl) {
    DeltaCrlSet result;
    for (const CRLItem* const delta : deltas) {
        if (names_equal(delta->issuer_name(), crl.issuer_name()) &&
            delta->idp_raw() == crl.idp_raw() && delta->aki_raw() == crl.aki_raw()) {
            result.insert(result.end(), delta);
        } else {
            note(event::delta_of_other_scope, told(*delta, "delta"), told(crl));
        }
    }
    return result;
}

const CRLItem* first_signed_delta(ChainValidator& chain, const DeltaCrlSet& deltas,
                                  const CertificateItem& signer) {
    for (const CRLItem* const delta : deltas) {
        if (private_key_was_usable(this_update(*delta), signer) &&
            chain.verified_crls.verify(*delta, signer)) {
            return delta;
        }
        note(event::delta_not_signed_by_signer, told(*delta, "delta"), told(signer, "signer"));
    }
    return nullptr;
}

} // namespace norvane
