#include "chain/CertificateIssuer.h"

#include "chain/AuthorityInfoAccess.h"
#include "chain/IssuerCandidates.h"
#include "chain/LinkTests.h"
#include "chain/RecordParts.h"

namespace norvane {
namespace {

bool is_issuer(ChainValidator& chain, const CertificateItem& certificate,
               const CertificateItem& candidate) {
    return is_time_valid(candidate, chain.verify_time) &&
           private_key_was_usable(not_before(certificate), candidate) &&
           is_signed_by(certificate, candidate);
}

const CertificateItem* first_issuer(ChainValidator& chain, const CertificateItem& certificate,
                                    const IssuerCandidateSearch& search) {
    for (const IssuerCandidate& candidate : search.candidates()) {
        const CertificateItem& item = candidate.certificate->first;
        Branch branch(event::candidate, told(item));
        if (branch.ends(is_issuer(chain, certificate, item), event::candidate_accepted,
                        event::candidate_dropped)) {
            return &item;
        }
    }
    return nullptr;
}

} // namespace

const CertificateItem* resolve_issuer(ChainValidator& chain, const CertificateItem& certificate) {
    const IssuerSearchKey key = make_issuer_key(certificate);
    const CertificateItemSet excluded;
    const ASN1T_AuthorityInfoAccessSyntax* const aia = certificate.authority_info_access();
    Branch branch(event::issuer_search, told(certificate, "subject"),
                  record_value("issuer", key.issuer), record_value("keyIdentifier", key.key_id));

    IssuerCandidateSearch known(key, excluded);
    candidates_from_cache(chain, known);
    candidates_from_extra(chain, known);
    candidates_from_stores(chain, known);
    if (aia != nullptr) {
        candidates_from_aia(chain, *aia, known, CRYPT_CACHE_ONLY_RETRIEVAL);
    }
    if (const CertificateItem* const issuer = first_issuer(chain, certificate, known)) {
        branch.end(event::issuer_found, told(*issuer, "issuer"));
        return issuer;
    }

    if (aia == nullptr || (chain.chain_flags & chain_cache_only) != 0) {
        branch.end(event::issuer_not_found, record_value("issuer", key.issuer));
        return nullptr;
    }
    IssuerCandidateSearch retrieved(key, excluded);
    candidates_from_aia(chain, *aia, retrieved, 0);
    const CertificateItem* const issuer = first_issuer(chain, certificate, retrieved);
    if (issuer == nullptr) {
        branch.end(event::issuer_not_found, record_value("issuer", key.issuer));
    } else {
        branch.end(event::issuer_found, told(*issuer, "issuer"));
    }
    return issuer;
}

} // namespace norvane
