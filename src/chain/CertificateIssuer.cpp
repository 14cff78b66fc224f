#include "chain/CertificateIssuer.h"

#include "chain/AuthorityInfoAccess.h"
#include "chain/IssuerCandidates.h"
#include "chain/LinkTests.h"

namespace norvane {
namespace {

bool is_issuer(ChainValidator& chain, const CertificateItem& certificate,
               const CertificateItem& candidate) {
    return is_time_valid(candidate, chain.verify_time) &&
           private_key_was_usable(not_before(certificate), candidate) &&
           certificate.verify_with_key(public_key(candidate));
}

const CertificateItem* first_issuer(ChainValidator& chain, const CertificateItem& certificate,
                                    const IssuerCandidateSearch& search) {
    for (const IssuerCandidate& candidate : search.candidates()) {
        if (is_issuer(chain, certificate, candidate.certificate->first)) {
            return &candidate.certificate->first;
        }
    }
    return nullptr;
}

} // namespace

const CertificateItem* resolve_issuer(ChainValidator& chain, const CertificateItem& certificate) {
    const IssuerSearchKey key = make_issuer_key(certificate);
    const CertificateItemSet excluded;
    const ASN1T_AuthorityInfoAccessSyntax* const aia = certificate.authority_info_access();

    IssuerCandidateSearch known(key, excluded);
    candidates_from_cache(chain, known);
    candidates_from_extra(chain, known);
    candidates_from_stores(chain, known);
    if (aia != nullptr) {
        candidates_from_aia(chain, *aia, known, CRYPT_CACHE_ONLY_RETRIEVAL);
    }
    if (const CertificateItem* const issuer = first_issuer(chain, certificate, known)) {
        return issuer;
    }

    if (aia == nullptr || (chain.chain_flags & chain_cache_only) != 0) {
        return nullptr;
    }
    IssuerCandidateSearch retrieved(key, excluded);
    candidates_from_aia(chain, *aia, retrieved, 0);
    return first_issuer(chain, certificate, retrieved);
}

} // namespace norvane
