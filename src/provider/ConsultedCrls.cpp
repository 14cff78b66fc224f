#include "provider/ConsultedCrls.h"

#include "chain/LinkTests.h"
#include "store/StoreHandle.h"
#include "values/CompareTimes.h"
#include "values/Date.h"
#include "values/ProcessFailure.h"

#include <iterator>
#include <utility>

namespace norvane {
namespace {

using TimeOf = const ASN1T_Time& (*)(const CRLItem&);

CrlPair make_pair(const CrlPairSet::value_type& pair) { return {pair.first, pair.second}; }

const CRLItem& latest_of(const CrlPair& pair) {
    return pair.delta != nullptr ? *pair.delta : *pair.base;
}

/// The pair whose time comes first, the earlier one in the set of two with the same time. A pair
/// with a delta is measured by its delta, one without by its base, which is then compared with the
/// base of the best so far.
CrlPair earliest(const CrlPairSet& pairs, TimeOf time_of) {
    CrlPair best = make_pair(*pairs.begin());
    for (auto place = std::next(pairs.begin()); place != pairs.end(); ++place) {
        const CrlPair pair = make_pair(*place);
        const CRLItem& rival = pair.delta != nullptr ? latest_of(best) : *best.base;
        if (compare_times(time_of(latest_of(pair)), time_of(rival)) < 0) {
            best = pair;
        }
    }
    return best;
}

PCCRL_CONTEXT make_context(const CRLItem& crl) {
    const CACMPT_BLOB& encoded = crl.encoded();
    return platform_answer(
        [&] { return CertCreateCRLContext(certificate_encoding, encoded.data, encoded.length); },
        source_module::chain, __LINE__);
}

bool release(PCCRL_CONTEXT& context) {
    const PCCRL_CONTEXT released = std::exchange(context, nullptr);
    return released == nullptr || CertFreeCRLContext(released) != FALSE;
}

/// Makes a context of the CRL, and notes the certificate's entry in it if there is one.
bool hand_out(CERT_REVOCATION_CRL_INFO& info, PCCRL_CONTEXT& slot, const CRLItem& crl,
              PCCERT_CONTEXT certificate) {
    slot = make_context(crl);
    if (slot == nullptr) {
        return false;
    }
    PCRL_ENTRY entry = nullptr;
    if (CertFindCertificateInCRL(certificate, slot, 0, nullptr, &entry) && entry != nullptr) {
        info.pCrlEntry = entry;
        info.fDeltaCrlEntry = &slot == &info.pDeltaCrlContext ? TRUE : FALSE;
    }
    return true;
}

} // namespace

std::uint32_t freshness_seconds(const CrlPairSet& pairs, ASN1CTime& now) {
    const ASN1T_Time& issued = this_update(latest_of(earliest(pairs, this_update)));
    const CACMPT_Date issue_date = date_from_asn1_time(issued.text, issued.t);
    const CACMPT_Date now_date = from_system_time(system_time(now));
    return now_date < issue_date ? 0 : to_time_t(now_date) - to_time_t(issue_date);
}

CrlPair pair_to_hand_out(const CertificateCacheInfo& result) {
    if (result.deciding_base_crl != nullptr) {
        return {result.deciding_base_crl, result.deciding_delta_crl};
    }
    return earliest(result.crl_pairs, next_update);
}

bool release_crls(CERT_REVOCATION_CRL_INFO& info) {
    info.pCrlEntry = nullptr;
    info.fDeltaCrlEntry = FALSE;
    const bool base_released = release(info.pBaseCrlContext);
    const bool delta_released = release(info.pDeltaCrlContext);
    return base_released && delta_released;
}

bool hand_out_crls(CERT_REVOCATION_CRL_INFO& info, PCCERT_CONTEXT certificate,
                   const CertificateCacheInfo& result) {
    if (!release_crls(info)) {
        return false;
    }
    if (result.crl_pairs.empty()) {
        return true;
    }
    const CrlPair pair = pair_to_hand_out(result);
    if (!hand_out(info, info.pBaseCrlContext, *pair.base, certificate)) {
        return false;
    }
    // Whether there is a delta at all is the first pair's word, also where another pair is chosen.
    const bool wants_delta = result.crl_pairs.begin()->second != nullptr;
    return !wants_delta || pair.delta == nullptr ||
           hand_out(info, info.pDeltaCrlContext, *pair.delta, certificate);
}

} // namespace norvane
