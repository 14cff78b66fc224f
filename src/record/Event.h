#pragma once

namespace norvane {

/// What a place in a decision has to say, apart from the objects that it is about.
struct Event {
    const char* code = nullptr;      ///< a word that never changes its meaning
    const char* reference = nullptr; ///< where the rule stands; null where none does
};

// All events. docs/decision-record.md tells of each what it means, and what the objects and values
// beside it are.
namespace event {

// The question.
inline constexpr Event question{"question"};
inline constexpr Event good{"good"};
inline constexpr Event revoked{"revoked"};
inline constexpr Event not_checked{"not_checked"};
inline constexpr Event crls_not_handed_out{"crls_not_handed_out"};
inline constexpr Event certificate_under_check_already{"certificate_under_check_already"};
inline constexpr Event question_faulty{"question_faulty"};
inline constexpr Event process_failed{"process_failed"};
inline constexpr Event quota_spent{"quota_spent"};
inline constexpr Event timeout_too_large{"timeout_too_large"};

// The end of a branch that has no other.
inline constexpr Event ended{"ended"};
inline constexpr Event abandoned{"abandoned"};

// The search for the issuer, and candidates for any place.
inline constexpr Event issuer_search{"issuer_search", "RFC 5280 6.1"};
inline constexpr Event issuer_found{"issuer_found"};
inline constexpr Event issuer_not_found{"issuer_not_found"};
inline constexpr Event issuer_urls{"issuer_urls", "RFC 5280 4.2.2.1"};
inline constexpr Event store_not_opened{"store_not_opened"};
inline constexpr Event source_searched{"source_searched"};
inline constexpr Event store_faulty{"store_faulty"};
inline constexpr Event candidate{"candidate"};
inline constexpr Event candidate_accepted{"candidate_accepted"};
inline constexpr Event candidate_dropped{"candidate_dropped"};
inline constexpr Event candidate_faulty{"candidate_faulty"};
inline constexpr Event candidate_on_path_already{"candidate_on_path_already"};
inline constexpr Event retrieved_candidate_differs{"retrieved_candidate_differs"};

// Tests of a certificate, or of what it has issued.
inline constexpr Event certificate_expired{"certificate_expired", "RFC 5280 4.1.2.5"};
inline constexpr Event certificate_not_yet_valid{"certificate_not_yet_valid", "RFC 5280 4.1.2.5"};
inline constexpr Event key_period_not_kept{"key_period_not_kept", "RFC 3280 4.2.1.4"};
inline constexpr Event signature_wrong{"signature_wrong", "RFC 5280 6.1.3 (a)(1)"};
inline constexpr Event algorithm_not_offered{"algorithm_not_offered"};

// The gathering of CRLs.
inline constexpr Event crl_search{"crl_search"};
inline constexpr Event point_names_crl_issuer{"point_names_crl_issuer", "RFC 5280 4.2.1.13"};
inline constexpr Event crl_gathered{"crl_gathered"};
inline constexpr Event delta_gathered{"delta_gathered", "RFC 5280 5.2.4"};
inline constexpr Event crl_urls{"crl_urls", "RFC 5280 4.2.1.13"};
inline constexpr Event delta_urls{"delta_urls", "RFC 5280 5.2.6"};
inline constexpr Event budget_spent{"budget_spent"};
inline constexpr Event url_asked_already{"url_asked_already"};

// The passes, and each CRL in them.
inline constexpr Event pass_over_the_cache{"pass_over_the_cache"};
inline constexpr Event pass_over_the_network{"pass_over_the_network"};
inline constexpr Event distribution_points{"distribution_points", "RFC 5280 6.3.3"};
inline constexpr Event crls_of_the_issuer{"crls_of_the_issuer", "RFC 5280 6.3.3"};
inline constexpr Event decided{"decided"};
inline constexpr Event crl_missing{"crl_missing"};
inline constexpr Event reasons_not_covered{"reasons_not_covered", "RFC 5280 6.3.3"};
inline constexpr Event crl{"crl"};
inline constexpr Event crl_faulty{"crl_faulty"};
inline constexpr Event crl_expired{"crl_expired", "RFC 5280 5.1.2.5"};
inline constexpr Event crl_not_yet_valid{"crl_not_yet_valid", "RFC 5280 5.1.2.4"};
inline constexpr Event crl_without_next_update{"crl_without_next_update", "RFC 5280 5.1.2.5"};
inline constexpr Event crl_not_by_key_of_issuer{"crl_not_by_key_of_issuer"};
inline constexpr Event crl_number_missing{"crl_number_missing", "RFC 5280 5.2.3"};
inline constexpr Event delta_missing{"delta_missing", "RFC 5280 5.2.4"};
inline constexpr Event delta_selected{"delta_selected", "RFC 5280 5.2.4"};
inline constexpr Event delta_of_other_base{"delta_of_other_base", "RFC 5280 5.2.4"};
inline constexpr Event delta_expired{"delta_expired", "RFC 5280 5.1.2.5"};
inline constexpr Event delta_not_yet_valid{"delta_not_yet_valid", "RFC 5280 5.1.2.4"};

// A CRL at a distribution point, or beside them.
inline constexpr Event point{"point", "RFC 5280 4.2.1.13"};
inline constexpr Event point_faulty{"point_faulty"};
inline constexpr Event crl_issuer_differs{"crl_issuer_differs", "RFC 5280 6.3.3 (b)(1)"};
inline constexpr Event crl_not_indirect{"crl_not_indirect", "RFC 5280 6.3.3 (b)(1)"};
inline constexpr Event distribution_point_differs{"distribution_point_differs",
                                                  "RFC 5280 6.3.3 (b)(2)(i)"};
inline constexpr Event crl_only_for_users{"crl_only_for_users", "RFC 5280 6.3.3 (b)(2)(ii)"};
inline constexpr Event crl_only_for_cas{"crl_only_for_cas", "RFC 5280 6.3.3 (b)(2)(iii)"};
inline constexpr Event delta_of_other_scope{"delta_of_other_scope", "RFC 5280 6.3.3 (c)"};
inline constexpr Event reasons_nothing_new{"reasons_nothing_new", "RFC 5280 6.3.3 (e)"};
inline constexpr Event delta_not_signed_by_signer{"delta_not_signed_by_signer",
                                                  "RFC 5280 6.3.3 (h)"};
inline constexpr Event certificate_listed{"certificate_listed", "RFC 5280 6.3.3 (i)"};
inline constexpr Event certificate_released{"certificate_released", "RFC 5280 5.3.1"};
inline constexpr Event reasons_contributed{"reasons_contributed", "RFC 5280 6.3.3 (l)"};

// The signer of a CRL.
inline constexpr Event signer_search{"signer_search", "RFC 5280 6.3.3 (f)"};
inline constexpr Event signer_found{"signer_found"};
inline constexpr Event signer_not_found{"signer_not_found"};
inline constexpr Event signer_not_allowed_to_sign_crls{"signer_not_allowed_to_sign_crls",
                                                       "RFC 5280 6.3.3 (f)"};
inline constexpr Event crl_signature_wrong{"crl_signature_wrong", "RFC 5280 6.3.3 (g)"};

// Paths, from what is to be trusted up to a root.
inline constexpr Event path{"path", "RFC 5280 6.1"};
inline constexpr Event path_holds{"path_holds"};
inline constexpr Event path_fails{"path_fails"};
inline constexpr Event path_without_issuer{"path_without_issuer", "RFC 5280 6.1"};
inline constexpr Event root_not_trusted{"root_not_trusted", "RFC 5280 6.1.1 (d)"};
inline constexpr Event trusted_without_being_a_root{"trusted_without_being_a_root"};
inline constexpr Event path_validation{"path_validation", "RFC 5280 6.1.3"};
inline constexpr Event names_do_not_chain{"names_do_not_chain", "RFC 5280 6.1.3 (a)(4)"};
inline constexpr Event usage_missing{"usage_missing", "RFC 5280 4.2.1.12"};
inline constexpr Event not_a_ca{"not_a_ca", "RFC 5280 6.1.4 (k)"};
inline constexpr Event path_too_long{"path_too_long", "RFC 5280 6.1.4 (l)"};
inline constexpr Event ca_may_not_sign_certificates{"ca_may_not_sign_certificates",
                                                    "RFC 5280 6.1.4 (n)"};
inline constexpr Event member_check{"member_check", "RFC 5280 6.1.3 (a)(3)"};
inline constexpr Event member_good{"member_good"};
inline constexpr Event member_revoked{"member_revoked"};
inline constexpr Event member_not_checked{"member_not_checked"};
inline constexpr Event member_under_check_already{"member_under_check_already"};

// Retrievals.
inline constexpr Event retrieval{"retrieval"};
inline constexpr Event retrieved{"retrieved"};
inline constexpr Event response_confirmed{"response_confirmed", "RFC 9110 15.4.5"};
inline constexpr Event response_cached{"response_cached"};
inline constexpr Event not_in_the_cache{"not_in_the_cache"};
inline constexpr Event failed_lately{"failed_lately"};
inline constexpr Event retrieval_failed{"retrieval_failed"};
inline constexpr Event url_refused{"url_refused"};
inline constexpr Event scheme_not_allowed{"scheme_not_allowed"};
inline constexpr Event name_not_resolved{"name_not_resolved"};
inline constexpr Event server_not_reached{"server_not_reached"};
inline constexpr Event server_silent{"server_silent"};
inline constexpr Event tls_failed{"tls_failed"};
inline constexpr Event connection_aborted{"connection_aborted"};
inline constexpr Event http_status{"http_status", "RFC 9110 15"};
inline constexpr Event redirection_failed{"redirection_failed", "RFC 9110 15.4"};
inline constexpr Event entry_missing{"entry_missing", "RFC 4511 4.5.2"};
inline constexpr Event access_denied{"access_denied"};
inline constexpr Event file_missing{"file_missing"};
inline constexpr Event response_too_large{"response_too_large"};
inline constexpr Event response_without_object{"response_without_object", "RFC 5280 4.2.1.13"};
inline constexpr Event response_outdated{"response_outdated"};
inline constexpr Event transports_missing{"transports_missing"};

} // namespace event
} // namespace norvane
