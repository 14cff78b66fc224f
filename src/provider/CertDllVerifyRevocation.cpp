#include "call/Question.h"
#include "chain/Chain.h"
#include "chain/RecordParts.h"
#include "items/RememberedNames.h"
#include "provider/ConsultedCrls.h"
#include "provider/ModuleLoad.h"
#include "provider/RevocationParameters.h"
#include "provider/StoreAssembly.h"
#include "values/CompareTimes.h"

#include <norvane/revocation.h>

#include <span>

namespace norvane {
namespace {

/// How the turn of one certificate ends.
enum class Turn {
    good,   ///< The next certificate has its turn.
    failed, ///< Revoked or not checked: the call ends with FALSE.
    cut,    ///< The consulted CRLs cannot be handed out: the call ends with TRUE, deliberately.
};

BOOL refuse(CERT_REVOCATION_STATUS& status, DWORD error) {
    status.dwError = error;
    SetLastError(error);
    return FALSE;
}

void use_time(ChainValidator& chain, const FILETIME& time) {
    SYSTEMTIME fields{};
    FileTimeToSystemTime(&time, &fields); // What it fails at is no calendar time for set_time.
    set_time(chain.verify_time, fields);
}

void use_flags(ChainValidator& chain, DWORD flags) {
    if ((flags & CERT_VERIFY_CACHE_ONLY_BASED_REVOCATION) != 0) {
        chain.chain_flags |= chain_cache_only;
    }
    if ((flags & CERT_VERIFY_REV_ACCUMULATIVE_TIMEOUT_FLAG) != 0) {
        chain.chain_flags |= chain_accumulative_timeout;
    }
}

/// Puts the certificate into the run's cache, marked as the one whose revocation is being decided.
const CertificateItem& register_subject(ChainValidator& chain, const CERT_CONTEXT& certificate) {
    const CertificateItem& item =
        cache_certificate(chain.item_cache,
                          ByteView{certificate.pbCertEncoded, certificate.cbCertEncoded},
                          CertificateCacheInfo())
            .first;
    chain.revocation_in_progress.insert(&item);
    return item;
}

Turn translate(RunStatus run_status, CERT_REVOCATION_STATUS& status) {
    switch (run_status) {
    case CHAIN_STATUS_GOOD:
        return Turn::good;
    case CHAIN_STATUS_NO_CHECK:
        refuse(status, static_cast<DWORD>(CRYPT_E_NO_REVOCATION_CHECK));
        return Turn::failed;
    default:
        status.dwReason = run_status;
        refuse(status, static_cast<DWORD>(CRYPT_E_REVOKED));
        return Turn::failed;
    }
}

Turn decide(DWORD index, PCCERT_CONTEXT certificate, DWORD flags,
            const RevocationParameters& parameters, CERT_REVOCATION_STATUS& status) {
    ChainValidator chain;
    assemble_stores(chain, parameters);
    if (parameters.time_to_use != nullptr) {
        use_time(chain, *parameters.time_to_use);
    }
    chain.retrieval_timeout = from_milliseconds(parameters.timeout);
    use_flags(chain, flags);

    CertificateCacheInfo result;
    const RunStatus run_status = verify(chain, register_subject(chain, *certificate), result);
    status.dwIndex = index;

    const FreshnessFields freshness(status);
    const bool has_pairs = !result.crl_pairs.empty();
    if (freshness.has_freshness_time != nullptr) {
        *freshness.has_freshness_time = has_pairs ? TRUE : FALSE;
    }
    if (freshness.freshness_time != nullptr && has_pairs) {
        *freshness.freshness_time = freshness_seconds(result.crl_pairs, chain.verify_time);
    }
    if (parameters.crl_info != nullptr &&
        !hand_out_crls(*parameters.crl_info, certificate, result)) {
        return Turn::cut;
    }
    return translate(run_status, status);
}

/// The answer where there can be none.
Turn not_checked(DWORD index, CERT_REVOCATION_STATUS& status) {
    status.dwIndex = index;
    refuse(status, static_cast<DWORD>(CRYPT_E_NO_REVOCATION_CHECK));
    return Turn::failed;
}

/// decide as a question of its own, with every exception turned into a verdict. A failure of the
/// process goes on to the questions outside this one.
Turn decide_within(Question& question, DWORD index, PCCERT_CONTEXT certificate, DWORD flags,
                   const RevocationParameters& parameters,
                   CERT_REVOCATION_STATUS& status) noexcept {
    if (question.runs_in_a_circle()) {
        note(event::certificate_under_check_already);
        return not_checked(index, status);
    }
    try {
        question.open();
        return decide(index, certificate, flags, parameters, status);
    } catch (...) {
        const std::uint32_t error = process_error_in_flight();
        question.note_failure(error);
        note(error == 0 ? event::question_faulty : event::process_failed,
             record_value("error", error), told_fault());
        return not_checked(index, status);
    }
}

Turn take_turn(DWORD index, PCCERT_CONTEXT certificate, DWORD flags,
               const RevocationParameters& parameters, CERT_REVOCATION_STATUS& status) noexcept {
    if (certificate == nullptr) {
        return not_checked(index, status);
    }
    const ByteView encoded{certificate->pbCertEncoded, certificate->cbCertEncoded};
    Question question(encoded);
    Branch branch(event::question, RecordPart{RecordPart::Kind::certificate, "subject", encoded});
    const Turn turn = decide_within(question, index, certificate, flags, parameters, status);
    if (turn == Turn::good) {
        branch.end(event::good);
    } else if (turn == Turn::cut) {
        branch.end(event::crls_not_handed_out);
    } else if (status.dwError == static_cast<DWORD>(CRYPT_E_REVOKED)) {
        branch.end(event::revoked, record_value("reason", status.dwReason));
    } else {
        branch.end(event::not_checked);
    }
    return turn;
}

BOOL verify_revocation(std::span<void* const> contexts, DWORD flags,
                       const RevocationParameters& parameters, CERT_REVOCATION_STATUS& status) {
    status.dwError = 0;
    status.dwIndex = 0;
    status.dwReason = 0;
    const FreshnessFields freshness(status);
    if (freshness.has_freshness_time != nullptr) {
        *freshness.has_freshness_time = FALSE;
    }
    if (freshness.freshness_time != nullptr) {
        *freshness.freshness_time = 0;
    }
    CERT_REVOCATION_CRL_INFO* const crl_info = parameters.crl_info;
    if (crl_info != nullptr) {
        // The delta context is the caller's as it came, and is released with the first turn.
        crl_info->pBaseCrlContext = nullptr;
        crl_info->pCrlEntry = nullptr;
        crl_info->fDeltaCrlEntry = FALSE;
    }

    const RememberedNames names;
    for (DWORD index = 0; index < contexts.size(); ++index) {
        switch (take_turn(index, static_cast<PCCERT_CONTEXT>(contexts[index]), flags, parameters,
                          status)) {
        case Turn::good:
            break;
        case Turn::cut:
            return TRUE;
        case Turn::failed:
            // A revoked verdict alone leaves its CRLs to the caller.
            if (status.dwError != static_cast<DWORD>(CRYPT_E_REVOKED) && crl_info != nullptr) {
                static_cast<void>(release_crls(*crl_info));
            }
            return FALSE;
        }
    }
    return TRUE;
}

} // namespace
} // namespace norvane

BOOL WINAPI CertDllVerifyRevocation(DWORD dwEncodingType, DWORD dwRevType, DWORD cContext,
                                    PVOID rgpvContext[], DWORD dwFlags,
                                    PCERT_REVOCATION_PARA pRevPara,
                                    PCERT_REVOCATION_STATUS pRevStatus) noexcept {
    using namespace norvane;
    constexpr DWORD encoding_mask = 0xFFFF;
    if (pRevStatus == nullptr || !is_large_enough(*pRevStatus)) {
        SetLastError(static_cast<DWORD>(E_INVALIDARG));
        return FALSE;
    }
    if (cContext == 0 || rgpvContext == nullptr) {
        return refuse(*pRevStatus, static_cast<DWORD>(E_INVALIDARG));
    }
    if ((dwEncodingType & encoding_mask) != X509_ASN_ENCODING ||
        dwRevType != CERT_CONTEXT_REVOCATION_TYPE || load_was_refused()) {
        return refuse(*pRevStatus, static_cast<DWORD>(CRYPT_E_NO_REVOCATION_CHECK));
    }
    return verify_revocation({rgpvContext, cContext}, dwFlags, RevocationParameters(pRevPara),
                             *pRevStatus);
}
