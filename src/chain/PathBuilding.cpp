#include "chain/PathBuilding.h"

#include "chain/AuthorityInfoAccess.h"
#include "chain/IssuerCandidates.h"
#include "chain/LinkTests.h"
#include "chain/PathFailure.h"
#include "chain/PathGuard.h"
#include "chain/PathValidation.h"
#include "chain/RecordParts.h"
#include "values/ProcessFailure.h"

#include <utility>

namespace norvane {
namespace {

/// What is on the path, which is no candidate for what goes in front of it: the only guard against
/// cycles.
using PathMembers = CertificateItemSet;

/// Makes a certificate a member for a scope, unless it is one already.
class Membership {
  public:
    Membership(PathMembers& members, const CertificateItem& certificate)
        : members_(members), entry_(members.insert(&certificate)) {}
    Membership(const Membership&) = delete;
    Membership& operator=(const Membership&) = delete;
    ~Membership() {
        if (entry_.second) {
            members_.erase(entry_.first);
        }
    }

  private:
    PathMembers& members_;
    std::pair<PathMembers::iterator, bool> entry_;
};

bool extend_path(ChainValidator& chain, PathMembers& members);

/// Tests the link between the path's first element, a candidate, and its child.
bool link_holds(ChainValidator& chain, const CertificateChainItem& child) {
    const auto first = chain.path.items.begin();
    const CertificateItem& candidate = first->item();
    if (child.info().verified_issuers.contains(&candidate)) {
        return true;
    }
    if (!is_time_valid(candidate, chain.verify_time)) {
        record_failure(chain, IS_NOT_TIME_VALID, first);
        return false;
    }
    if ((chain.chain_flags & ChainFlagDeferSignatureCheck) != 0) {
        return true;
    }
    if (!private_key_was_usable(not_before(child.item()), candidate)) {
        record_failure(chain, IS_NOT_TIME_VALID, first);
        return false;
    }
    if (!is_signed_by(child.item(), candidate)) {
        // The record marks the candidate, though it is the child's signature that failed.
        record_failure(chain, IS_NOT_SIGNATURE_VALID, first);
        return false;
    }
    return true;
}

bool try_candidates(ChainValidator& chain, const IssuerCandidateSearch& search,
                    PathMembers& members) {
    const CertificateChainItem& child = chain.path.items.front();
    for (const IssuerCandidate& candidate : search.candidates()) {
        PathGuard guard(chain.path);
        const CertificateItem& item = candidate.certificate->first;
        Branch branch(event::candidate, told(item));
        // A candidate with a fault has failed without a record.
        const bool extended = holds_without_fault(
            [&] {
                const Membership membership(members, item);
                chain.path.items.emplace_front(*candidate.certificate);
                return link_holds(chain, child) && extend_path(chain, members);
            },
            [&] { note(event::candidate_faulty, told(item), told_fault()); });
        if (branch.ends(extended, event::candidate_accepted, event::candidate_dropped)) {
            guard.keep();
            return true;
        }
    }
    return false;
}

/// The known certificates first, then, over the wire, what only the extension can bring.
bool extend_by_issuer(ChainValidator& chain, PathMembers& members) {
    const CertificateItem& first = chain.path.items.front().item();
    const IssuerSearchKey key = make_issuer_key(first);
    const ASN1T_AuthorityInfoAccessSyntax* const aia = first.authority_info_access();

    IssuerCandidateSearch known(key, members);
    candidates_from_cache(chain, known);
    candidates_from_extra(chain, known);
    candidates_from_stores(chain, known);
    if (aia != nullptr) {
        candidates_from_aia(chain, *aia, known, CRYPT_CACHE_ONLY_RETRIEVAL);
    }
    if (try_candidates(chain, known, members)) {
        return true;
    }

    if (aia != nullptr && (chain.chain_flags & chain_cache_only) == 0) {
        IssuerCandidateSearch retrieved(key, members);
        candidates_from_aia(chain, *aia, retrieved, 0);
        if (try_candidates(chain, retrieved, members)) {
            return true;
        }
    }
    note(event::path_without_issuer, told(first), record_value("issuer", key.issuer),
         record_value("keyIdentifier", key.key_id));
    record_partial_chain(chain, IS_PARTIAL_CHAIN);
    return false;
}

/// Extends the path, which is not empty, from its first element towards the root.
bool extend_path(ChainValidator& chain, PathMembers& members) {
    const auto first = chain.path.items.begin();
    const bool self_signed = first->item().is_self_signed();
    const bool trusted = first->info().trusted;
    if (self_signed && !trusted) {
        note(event::root_not_trusted, told(first->item()));
        record_failure(chain, IS_UNTRUSTED_ROOT, first);
        return false;
    }
    if (trusted) {
        if (self_signed) {
            return validate_path(chain);
        }
        note(event::trusted_without_being_a_root, told(first->item()));
        record_failure(chain, IS_NOT_SIGNATURE_VALID, first);
        return false;
    }
    return extend_by_issuer(chain, members);
}

} // namespace

bool push_and_extend(ChainValidator& chain, ItemCache::value_type& certificate) {
    PathGuard guard(chain.path);
    Branch branch(event::path, told(certificate.first));
    // A certificate with a fault has failed without a record.
    const bool extended = holds_without_fault(
        [&] {
            chain.path.items.emplace_front(certificate);
            PathMembers members;
            for (const CertificateChainItem& element : chain.path.items) {
                members.insert(&element.item());
            }
            return extend_path(chain, members);
        },
        [&] { note(event::candidate_faulty, told(certificate.first), told_fault()); });
    if (branch.ends(extended, event::path_holds, event::path_fails)) {
        guard.keep();
    }
    return extended;
}

} // namespace norvane
