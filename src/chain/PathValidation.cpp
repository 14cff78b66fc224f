#include "chain/PathValidation.h"

#include "asn1/BitString.h"
#include "chain/DelegatedCheck.h"
#include "chain/LinkTests.h"
#include "chain/PathFailure.h"
#include "chain/RecordParts.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace norvane {
namespace {

using Position = Chain::Position;

constexpr std::uint32_t key_cert_sign = 5; // Bit of KeyUsage, RFC 5280 4.2.1.3.

/// Private key usage period and signature, where the search has left them to the whole path.
bool deferred_link_holds(ChainValidator& chain, Position element, Position issuer) {
    if (!private_key_was_usable(not_before(element->item()), issuer->item())) {
        record_failure(chain, IS_NOT_TIME_VALID, element);
        return false;
    }
    if (!is_signed_by(element->item(), issuer->item())) {
        record_failure(chain, IS_NOT_SIGNATURE_VALID, element);
        return false;
    }
    return true;
}

bool validity_holds(ChainValidator& chain, Position element) {
    if (is_time_valid(element->item(), chain.verify_time)) {
        return true;
    }
    record_failure(chain, IS_NOT_TIME_VALID, element);
    return false;
}

bool names_chain(ChainValidator& chain, Position element, Position issuer) {
    if (names_equal(element->item().issuer_name(), issuer->item().subject_name())) {
        return true;
    }
    note(event::names_do_not_chain, told(element->item()), told(issuer->item(), "issuer"));
    record_broken_link(chain, element);
    return false;
}

bool required_usage_holds(ChainValidator& chain, Position element) {
    const CERT_USAGE_MATCH* const required = chain.required_ekus;
    if (required == nullptr || required->Usage.cUsageIdentifier == 0 ||
        element->item().has_ext_key_usages(*required)) {
        return true;
    }
    note(event::usage_missing, told(element->item()));
    record_failure(chain, IS_NOT_VALID_FOR_USAGE, element);
    return false;
}

/// Tests a CA, and takes it off `budget`, the number of certificates that may follow.
bool ca_tests_hold(ChainValidator& chain, Position element, std::size_t& budget) {
    const ASN1T_BasicConstraints* const constraints = element->item().basic_constraints();
    if (constraints == nullptr || !constraints->cA || budget == 0) {
        const bool is_ca = constraints != nullptr && constraints->cA;
        note(is_ca ? event::path_too_long : event::not_a_ca, told(element->item()));
        record_failure(chain, INVALID_BASIC_CONSTRAINTS, element);
        return false;
    }
    --budget;
    if (constraints->m.pathLenConstraintPresent) {
        budget = std::min<std::size_t>(constraints->pathLenConstraint, budget);
    }
    const ASN1T_KeyUsage* const usage = element->item().key_usage();
    if (usage != nullptr && !ASN1CBitStr(usage->bits).get(key_cert_sign)) {
        note(event::ca_may_not_sign_certificates, told(element->item()));
        record_failure(chain, IS_NOT_VALID_FOR_USAGE, element);
        return false;
    }
    return true;
}

/// The tests of a certificate beside its issuer, short of revocation.
bool certificate_holds(ChainValidator& chain, Position element, Position issuer) {
    const bool is_first = element == chain.path.items.begin();
    const bool deferred = (chain.chain_flags & ChainFlagDeferSignatureCheck) != 0;
    if (deferred && !is_first && !deferred_link_holds(chain, element, issuer)) {
        return false;
    }
    return validity_holds(chain, element) && (is_first || names_chain(chain, element, issuer));
}

} // namespace

bool validate_path(ChainValidator& chain) {
    const Branch branch(event::path_validation);
    Chain::Items& elements = chain.path.items;
    for (CertificateChainItem& element : elements) {
        element.status = 0;
    }
    chain.path.path_status = 0;

    std::size_t budget = elements.size();
    auto issuer = elements.begin();
    for (auto element = elements.begin(); element != elements.end(); ++element) {
        CertificateItemSet& verified_issuers = element->info().verified_issuers;
        if (verified_issuers.contains(&issuer->item())) {
            // Nothing else adds to the set, so this finds only what the cache brought along.
            verified_issuers.insert(&issuer->item());
        } else if (!certificate_holds(chain, element, issuer)) {
            return false;
        }
        if (!element->info().trusted && !delegated_revocation_check(chain, element, issuer)) {
            return false;
        }
        const bool is_last = std::next(element) == elements.end();
        if (is_last ? !required_usage_holds(chain, element)
                    : !ca_tests_hold(chain, element, budget)) {
            return false;
        }
        if (element != elements.begin()) {
            ++issuer;
        }
    }
    return true;
}

} // namespace norvane
