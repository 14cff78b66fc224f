#include "chain/CrlIssuer.h"

#include "asn1/BitString.h"
#include "chain/IssuerCandidates.h"
#include "chain/LinkTests.h"
#include "chain/PathBuilding.h"
#include "chain/RecordParts.h"
#include "values/ProcessFailure.h"

#include <utility>

namespace norvane {
namespace {

constexpr std::uint32_t crl_sign = 6; // Bit of KeyUsage, RFC 5280 4.2.1.3.

bool is_crl_issuer(ChainValidator& chain, const CRLItem& crl, ItemCache::value_type& candidate) {
    const CertificateItem& signer = candidate.first;
    const ASN1T_KeyUsage* const usage = signer.key_usage();
    if (usage != nullptr && !ASN1CBitStr(usage->bits).get(crl_sign)) {
        return fails(event::signer_not_allowed_to_sign_crls, told(signer, "signer"));
    }
    return private_key_was_usable(this_update(crl), signer) &&
           chain.verified_crls.verify(crl, signer) && push_and_extend(chain, candidate);
}

} // namespace

bool find_crl_issuer(ChainValidator& chain, CRLChainItem& crl) {
    const IssuerSearchKey key = make_crl_issuer_key(crl.item);
    Branch branch(event::signer_search, told(crl.item), record_value("issuer", key.issuer),
                  record_value("keyIdentifier", key.key_id));
    // What is on the path already may sign this CRL too.
    const CertificateItemSet excluded;
    IssuerCandidateSearch search(key, excluded);
    candidates_from_cache(chain, search);
    candidates_from_extra(chain, search);
    candidates_from_stores(chain, search);

    for (const IssuerCandidate& candidate : search.candidates()) {
        const CertificateItem& signer = candidate.certificate->first;
        Branch of_candidate(event::candidate, told(signer, "signer"));
        const bool holds = holds_without_fault(
            [&] { return is_crl_issuer(chain, crl.item, *candidate.certificate); },
            [&] { note(event::candidate_faulty, told(signer, "signer"), told_fault()); });
        if (of_candidate.ends(holds, event::candidate_accepted, event::candidate_dropped)) {
            crl.info.crl_issuer = &signer;
            branch.end(event::signer_found, told(signer, "signer"));
            return true;
        }
    }
    branch.end(event::signer_not_found, record_value("issuer", key.issuer));
    if (chain.best_path) {
        chain.path = *std::exchange(chain.best_path, std::nullopt);
    }
    return false;
}

} // namespace norvane
