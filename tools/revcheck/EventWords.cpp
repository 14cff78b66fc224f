#include "EventWords.h"

#include <algorithm>
#include <iterator>

namespace norvane {
namespace {

// The distances follow the order in which a decision goes: its issuer, the gathering of CRLs, the
// gates of a CRL, its scope, its signer, the signer's path, the reasons it covers.
constexpr EventWords all_words[] = {
    {"question", 0, "is {subject} revoked?", ""},
    {"good", 0, "good", ""},
    {"revoked", 0, "revoked, reason {reason}", ""},
    {"not_checked", 0, "no check", ""},
    {"crls_not_handed_out", 0, "the CRLs that were consulted cannot be handed out", ""},
    {"certificate_under_check_already", 900,
     "the check of this certificate needs itself to be finished first",
     "CAs vouch for each other's CRLs in a circle; the CA has to sign its CRLs with a key that "
     "does not depend on them"},
    {"question_faulty", 20, "the decision ended at a fault: {fault}", ""},
    {"process_failed", 980, "this program failed, not the material: {fault}",
     "try again when the system has memory and files to give"},
    {"quota_spent", 1000, "limit {quota} of section [limits] is spent",
     "the material is unusually large or tangled; if it is yours, raise the limit in the "
     "configuration"},
    {"timeout_too_large", 990, "the time-out is longer than can be counted",
     "give a shorter --timeout"},
    {"store_not_opened", 15, "store {store} cannot be opened",
     "give the store with --root or --ca, or mend the configuration"},

    {"issuer_search", 0, "search for the issuer of {subject}, {issuer}", ""},
    {"issuer_found", 0, "it is {issuer}", ""},
    {"issuer_not_found", 30, "no certificate of the issuer, {issuer}, is at hand",
     "give the issuer's certificate with --ca"},
    {"issuer_urls", 0, "what authority information access names", ""},
    {"source_searched", 0, "{source}: {found} found", ""},
    {"store_faulty", 32, "{source} cannot be searched: {fault}", ""},
    {"candidate", 0, "candidate {certificate}{signer}", ""},
    {"candidate_accepted", 0, "accepted", ""},
    {"candidate_dropped", 0, "dropped", ""},
    {"candidate_faulty", 34, "the certificate is faulty: {fault}",
     "ask its issuer for a certificate that follows RFC 5280"},
    {"retrieved_candidate_differs", 33, "{certificate} was retrieved, but is not the issuer", ""},
    {"certificate_expired", 40, "{certificate} expired at {notAfter}; the check is for {time}",
     "give a newer certificate of that CA with --ca, or check for an earlier moment with --time"},
    {"certificate_not_yet_valid", 40,
     "{certificate} is valid from {notBefore} on; the check is for {time}",
     "check the clock, or give another moment with --time"},
    {"key_period_not_kept", 42,
     "the private key of {certificate} was not to be used at {used}, outside its usage period",
     "ask the CA, or check without --strict-pkup"},
    {"algorithm_not_offered", 45, "signatures of algorithm {algorithm} are not verified here",
     "install the library for it, or if it is one over SHA-1, allow that in section [crypto] of "
     "the "
     "configuration"},
    {"signature_wrong", 44, "the key of {key} does not verify the signature of {certificate}",
     "give the CA's certificate with the right key with --ca"},

    {"point_names_crl_issuer", 25,
     "a distribution point of the certificate names another issuer of CRLs (cRLIssuer)",
     "such certificates cannot be checked here; ask the CA for one with CRLs of its own"},
    {"crl_search", 0, "CRLs of {issuer}", ""},
    {"crl_gathered", 0, "CRL {crl}", ""},
    {"delta_gathered", 0, "delta CRL {crl}", ""},
    {"crl_urls", 0, "what the distribution points name", ""},
    {"delta_urls", 0, "where deltas are said to be", ""},
    {"budget_spent", 70, "the time for all retrievals together is spent: {url} was not asked",
     "give more with --timeout, or leave --accumulative"},
    {"url_asked_already", 0, "{url} was asked already", ""},

    {"retrieval", 0, "{url} from the {from}", ""},
    {"retrieved", 0, "retrieved, {octets} octets in {milliseconds} ms", ""},
    {"response_confirmed", 0, "not modified since {age_seconds} s", ""},
    {"response_cached", 0, "cached {age_seconds} s ago", ""},
    {"not_in_the_cache", 0, "not in the cache", ""},
    {"failed_lately", 0, "this failed a moment ago, so nobody was asked again", ""},
    {"retrieval_failed", 62, "the retrieval failed with error {error} {cause}", ""},
    {"url_refused", 62, "the URL is not one that may be asked", "ask the CA to mend the URL"},
    {"scheme_not_allowed", 62, "URLs of this scheme are not allowed by the configuration",
     "allow it with schemes in section [retrieval], or give the file with --crls or --ca"},
    {"name_not_resolved", 63, "the host name cannot be resolved: {cause}",
     "check the name and the DNS, or give the file with --crls or --ca"},
    {"server_not_reached", 64, "the server cannot be reached: {cause}",
     "check the network and the proxy, or give the file with --crls or --ca"},
    {"server_silent", 65, "the server did not answer in {milliseconds} ms",
     "give more time with --timeout, or the file with --crls or --ca"},
    {"tls_failed", 65, "TLS with the server failed: {cause}",
     "mend the server's certificate or this system's trust in it"},
    {"connection_aborted", 66, "the server ended the connection: {cause}", "try again later"},
    {"http_status", 67, "the server answers with status {status}",
     "tell who runs the server that the file is not there"},
    {"redirection_failed", 67, "the server redirects to where nobody may be asked",
     "tell who runs the server"},
    {"entry_missing", 67, "the directory has no such entry or value: {cause}",
     "tell who runs the directory"},
    {"access_denied", 67, "access is denied", "tell who runs the server"},
    {"file_missing", 67, "there is no such file", "check the path"},
    {"response_too_large", 68, "the response is larger than the configuration allows",
     "raise response_limit or certificate_limit in section [retrieval]"},
    {"response_without_object", 69, "the response is not a CRL or certificate",
     "tell who runs the server that something else is served there"},
    {"response_outdated", 69, "the response is older than what was seen before",
     "tell who runs the server that it serves an old CRL"},
    {"transports_missing", 62, "the library that speaks to servers is not installed",
     "install it whole"},

    {"pass_over_the_cache", 0, "with what the stores and the cache have", ""},
    {"pass_over_the_network", 0, "once more, with the network where that is allowed", ""},
    {"distribution_points", 0, "at the distribution points, CRLs: {CRLs}", ""},
    {"crls_of_the_issuer", 0, "without distribution points, CRLs of the issuer: {CRLs}", ""},
    {"decided", 0, "decided", ""},
    {"reasons_not_covered", 50, "reasons that usable CRLs cover: {covered}",
     "give the CRLs for the other reasons with --crls"},
    {"crl_missing", 52, "there is no CRL of {issuer}", "give it with --crls"},
    {"crl", 0, "{crl}", ""},
    {"crl_faulty", 100, "the CRL {crl} is faulty: {fault}", "ask its issuer for a proper CRL"},
    {"point_faulty", 135, "the CRL {crl} cannot be used at this point: {fault}",
     "ask its issuer for a proper CRL"},
    {"crl_without_next_update", 105, "the CRL {crl} does not say until when it is current",
     "ask its issuer for a CRL with nextUpdate"},
    {"crl_expired", 110, "the CRL {crl} expired at {nextUpdate}; the check is for {time}",
     "give a newer CRL with --crls, or check for an earlier moment with --time"},
    {"crl_not_yet_valid", 110, "the CRL {crl} is from {thisUpdate}; the check is for {time}",
     "give the CRL of that time with --crls, check the clock, or give another --time"},
    {"crl_not_by_key_of_issuer", 120,
     "the CRL {crl} is not signed with the key that signed the certificate",
     "give the CRL that belongs to this key with --crls"},
    {"crl_number_missing", 127, "the CRL {crl} has no number that deltas could refer to",
     "ask its issuer for a CRL with a number"},
    {"delta_of_other_base", 126, "the delta {delta} is for another base CRL",
     "give the delta that belongs to the base CRL with --crls"},
    {"delta_expired", 128, "the delta {delta} expired at {nextUpdate}; the check is for {time}",
     "give a newer delta CRL with --crls"},
    {"delta_not_yet_valid", 128, "the delta {delta} is from {thisUpdate}; the check is for {time}",
     "give the delta CRL of that time with --crls"},
    {"delta_missing", 125, "the CRL {crl} counts only with a delta CRL, and none fits",
     "give the delta CRL with --crls"},
    {"delta_selected", 0, "delta {delta} fits", ""},

    {"point", 0, "distribution point {distributionPoint}", ""},
    {"crl_issuer_differs", 130,
     "the CRL {crl} is not by the issuer that counts here, {cRLIssuer}{issuer}",
     "give the CRL of that issuer with --crls"},
    {"crl_not_indirect", 132, "the CRL {crl} does not say that it speaks for other CAs",
     "ask its issuer for a CRL with indirectCRL"},
    {"distribution_point_differs", 134, "the CRL {crl} is for another distribution point",
     "give the CRL of the certificate's point with --crls"},
    {"crl_only_for_users", 136, "the CRL {crl} is only for certificates that are no CA's",
     "give the CRL for CAs with --crls"},
    {"crl_only_for_cas", 136, "the CRL {crl} is only for certificates of CAs",
     "give the CRL for end entities with --crls"},
    {"delta_of_other_scope", 138, "the delta {delta} has another scope than the base CRL",
     "give the delta that belongs to the base CRL with --crls"},
    {"reasons_nothing_new", 0, "the CRL covers nothing new: {reasons}", ""},

    {"signer_search", 0, "who signed {crl}", ""},
    {"signer_found", 0, "it is {signer}", ""},
    {"signer_not_found", 140, "no certificate of who signed the CRL of {issuer} is at hand",
     "give the signer's certificate with --ca"},
    {"signer_not_allowed_to_sign_crls", 150,
     "{signer} may not sign CRLs: its key usage lacks cRLSign",
     "ask the CA for a CRL by a key that may sign it"},
    {"crl_signature_wrong", 152, "the key of {key} does not verify the signature of the CRL {crl}",
     "the CRL is damaged, or signed with another key: give that key's certificate with --ca, or "
     "the right CRL with --crls"},

    {"path", 0, "path of {certificate}", ""},
    {"path_holds", 0, "the path holds", ""},
    {"path_fails", 0, "the path fails", ""},
    {"path_without_issuer", 200, "the issuer of {certificate} on the path, {issuer}, is not known",
     "give its certificate with --ca, or with --root if it is a root to be trusted"},
    {"candidate_on_path_already", 203,
     "{certificate} stands on the path of an earlier CRL of this check, and cannot serve again",
     "give one CRL that covers all reasons with --crls"},
    {"root_not_trusted", 210, "the root {certificate} is not trusted",
     "if it is to be trusted, give it with --root"},
    {"trusted_without_being_a_root", 215, "{certificate} is trusted, but is not self-signed",
     "give the root above it with --root"},
    {"path_validation", 0, "validation of the path", ""},
    {"names_do_not_chain", 230, "{certificate} names another issuer than {issuer}", ""},
    {"usage_missing", 235, "{certificate} lacks the extended key usage that is wanted", ""},
    {"not_a_ca", 236, "{certificate} on the path is not a CA's",
     "the CA has to be given a certificate with cA in its basic constraints"},
    {"path_too_long", 236, "the path is longer than {certificate} allows", ""},
    {"ca_may_not_sign_certificates", 236,
     "{certificate} on the path may not sign certificates: its key usage lacks keyCertSign", ""},
    {"member_check", 0, "is {certificate}, on the path, revoked?", ""},
    {"member_good", 0, "it is good", ""},
    {"member_revoked", 260, "{certificate} on the path is revoked",
     "the CA has to use another certificate"},
    {"member_not_checked", 250, "whether {certificate} on the path is revoked is not known", ""},
    {"member_under_check_already", 255,
     "the check of {certificate} needs itself to be finished first",
     "the CA has to sign its CRLs with a key that does not depend on them"},
    {"certificate_listed", 0, "the certificate is listed, reason {reason}", ""},
    {"certificate_released", 0, "the certificate has been released", ""},
    {"delta_not_signed_by_signer", 300,
     "the delta {delta} is not signed by the signer of the base CRL, {signer}",
     "give a delta CRL by that signer with --crls"},
    {"reasons_contributed", 0, "it covers {reasons}, with others {covered}", ""},
    {"ended", 0, "", ""},
    {"abandoned", 0, "given up", ""},
};

std::string object_text(const RecordedObject& object) {
    if (object.is_crl) {
        return object.name + (object.from.empty() ? "" : " of " + object.from);
    }
    return object.name + " (" + object.serial + ")";
}

} // namespace

EventWords words_of(std::string_view code) {
    const auto* const row = std::ranges::find(all_words, code, &EventWords::code);
    return row == std::end(all_words) ? EventWords{code, 0, code, ""} : *row;
}

std::string phrase_of(const RecordedEvent& event, const DecisionRecord& record) {
    std::string_view rest = words_of(event.code).phrase;
    std::string text;
    for (std::size_t at = rest.find('{'); at != rest.npos; at = rest.find('{')) {
        text += rest.substr(0, at);
        const std::size_t end = rest.find('}', at);
        const std::string_view name = rest.substr(at + 1, end - at - 1);
        if (const auto object = object_in(event, name)) {
            text += object_text(record.objects()[*object]);
        } else {
            text += event.value(name);
        }
        rest.remove_prefix(end + 1);
    }
    return text + std::string(rest);
}

} // namespace norvane
