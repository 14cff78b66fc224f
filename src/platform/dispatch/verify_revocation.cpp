#include "platform/dispatch/ModuleParameters.h"
#include "platform/dispatch/RevocationModules.h"
#include "platform/failure.h"
#include "platform/retrieval/note_verdict.h"
#include "platform/store/guarded.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using norvane::ModuleParameters;
using norvane::VerifyRevocation;

using Status = CERT_REVOCATION_STATUS;

constexpr std::size_t least_status_size = offsetof(Status, fHasFreshnessTime);

/// What it means that no module could check, the most telling answer first. Any other error of a
/// module is like the last of these.
constexpr std::array<DWORD, 3> reasons_for_no_check = {
    CRYPT_E_REVOCATION_OFFLINE, CRYPT_E_NOT_IN_REVOCATION_DATABASE, CRYPT_E_NO_REVOCATION_CHECK};

bool is_more_telling(DWORD error, DWORD than) noexcept {
    return std::ranges::find(reasons_for_no_check, error) <
           std::ranges::find(reasons_for_no_check, than);
}

Status failure(DWORD error) noexcept {
    Status status{};
    status.dwError = error;
    return status;
}

/// One call of the dispatcher.
struct Question {
    DWORD encoding_type;
    DWORD revocation_type;
    std::span<const PVOID> contexts;
    DWORD flags;
    std::span<const VerifyRevocation> modules;
    ModuleParameters& parameters;
};

Status ask_module(const Question& question, VerifyRevocation module, PVOID context) noexcept {
    Status answer{};
    answer.cbSize = sizeof answer;
    const BOOL good = module(question.encoding_type, question.revocation_type, 1, &context,
                             question.parameters.flags(), question.parameters.para(), &answer);
    if (good != FALSE) {
        answer.dwError = ERROR_SUCCESS;
    } else if (answer.dwError != CRYPT_E_REVOKED &&
               std::ranges::find(reasons_for_no_check, answer.dwError) ==
                   reasons_for_no_check.end()) {
        answer.dwError = CRYPT_E_NO_REVOCATION_CHECK;
    }
    if (answer.dwError != CRYPT_E_REVOKED) {
        answer.dwReason = 0;
    }
    return answer;
}

/// Asks the modules in turn until one has a verdict; of several without one the first with the most
/// telling answer counts.
Status ask_modules(const Question& question, PVOID context, PCCERT_CONTEXT issuer) noexcept {
    Status told = failure(CRYPT_E_NO_REVOCATION_DLL);
    for (const VerifyRevocation module : question.modules) {
        question.parameters.make_out(issuer);
        const Status answer = ask_module(question, module, context);
        if (answer.dwError == ERROR_SUCCESS || answer.dwError == CRYPT_E_REVOKED) {
            norvane::note_verdict(question.parameters.crls());
            return answer;
        }
        if (is_more_telling(answer.dwError, told.dwError)) {
            told = answer;
        }
    }
    return told;
}

/// The certificate that the caller says has issued the one at `index`, or null.
PCCERT_CONTEXT next_in_chain(const Question& question, std::size_t index) noexcept {
    const bool is_chain = question.revocation_type == CERT_CONTEXT_REVOCATION_TYPE &&
                          (question.flags & CERT_VERIFY_REV_CHAIN_FLAG) != 0;
    return is_chain && index + 1 < question.contexts.size()
               ? static_cast<PCCERT_CONTEXT>(question.contexts[index + 1])
               : nullptr;
}

Status check_all(const Question& question) noexcept {
    Status status{};
    for (DWORD index = 0; index < question.contexts.size(); ++index) {
        status = ask_modules(question, question.contexts[index], next_in_chain(question, index));
        status.dwIndex = index;
        if (status.dwError != ERROR_SUCCESS) {
            break;
        }
    }
    if (status.dwError == ERROR_SUCCESS || status.dwError == CRYPT_E_REVOKED) {
        question.parameters.keep_crls();
    }
    return status;
}

Status answer(DWORD encoding_type, DWORD revocation_type, std::span<const PVOID> contexts,
              DWORD flags, const CERT_REVOCATION_PARA* para) noexcept {
    ModuleParameters parameters(para, flags);
    if (contexts.empty() || std::ranges::find(contexts, nullptr) != contexts.end()) {
        return failure(E_INVALIDARG);
    }
    try {
        const Question question{.encoding_type = encoding_type,
                                .revocation_type = revocation_type,
                                .contexts = contexts,
                                .flags = flags,
                                .modules = norvane::revocation_modules(),
                                .parameters = parameters};
        return check_all(question);
    } catch (...) {
        return failure(norvane::code_of_thrown());
    }
}

/// Writes the fields that the caller's structure has.
void tell(CERT_REVOCATION_STATUS& caller, const Status& status) noexcept {
    caller.dwIndex = status.dwIndex;
    caller.dwError = status.dwError;
    caller.dwReason = status.dwReason;
    if (caller.cbSize >= offsetof(Status, dwFreshnessTime)) {
        caller.fHasFreshnessTime = status.fHasFreshnessTime;
    }
    if (caller.cbSize >= sizeof(Status)) {
        caller.dwFreshnessTime = status.dwFreshnessTime;
    }
}

} // namespace

BOOL CertVerifyRevocation(DWORD dwEncodingType, DWORD dwRevType, DWORD cContext,
                          PVOID rgpvContext[], DWORD dwFlags, PCERT_REVOCATION_PARA pRevPara,
                          PCERT_REVOCATION_STATUS pRevStatus) noexcept {
    if (pRevStatus == nullptr || pRevStatus->cbSize < least_status_size) {
        return norvane::fail(E_INVALIDARG);
    }
    const std::span<const PVOID> contexts(rgpvContext, rgpvContext == nullptr ? 0 : cContext);
    const Status status = answer(dwEncodingType, dwRevType, contexts, dwFlags, pRevPara);
    tell(*pRevStatus, status);
    return status.dwError == ERROR_SUCCESS ? TRUE : norvane::fail(status.dwError);
}
