#include "platform/retrieval/RetrievalSource.h"

#include <norvane/wincrypt.h>

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace norvane {
namespace {

struct Source {
    PFN_NORVANE_RETRIEVAL_SOURCE function = nullptr;
    void* context = nullptr;
};

constinit thread_local Source source;

RetrievalOutcome outcome_of_answer(const NORVANE_RETRIEVAL_ANSWER& answer, ObjectKind kind) {
    RetrievalOutcome outcome{.error = answer.dwError,
                             .cause = answer.pszCause == nullptr ? "" : answer.pszCause,
                             .confirmed = answer.fConfirmed != FALSE,
                             .remembered = answer.fRemembered != FALSE,
                             .measured = {{.milliseconds = answer.ullMilliseconds,
                                           .age_seconds = answer.ullAgeSeconds}}};
    if (answer.dwError != ERROR_SUCCESS) {
        return outcome;
    }
    std::vector<ByteView> parts;
    for (const CRYPT_DATA_BLOB& object : std::span(answer.rgObject, answer.cObject)) {
        parts.push_back({object.pbData, object.cbData});
    }
    auto response = std::make_shared<Response>();
    response->objects = read_objects_of(kind, parts);
    if (!response->objects) {
        outcome.error = CRYPT_E_NO_MATCH;
        return outcome;
    }
    outcome.response = std::move(response);
    return outcome;
}

} // namespace

std::optional<RetrievalOutcome> answer_of_source(const char* url, ObjectKind kind, DWORD flags,
                                                 DWORD timeout_ms) {
    if (source.function == nullptr) {
        return std::nullopt;
    }
    NORVANE_RETRIEVAL_ANSWER answer{};
    answer.cbSize = sizeof answer;
    source.function(url, kind == ObjectKind::crl ? CONTEXT_OID_CRL : CONTEXT_OID_CERTIFICATE, flags,
                    timeout_ms, &answer, source.context);
    return outcome_of_answer(answer, kind);
}

} // namespace norvane

void NorvaneSetRetrievalSource(PFN_NORVANE_RETRIEVAL_SOURCE pfnSource, void* pvContext) noexcept {
    norvane::source = {pfnSource, pvContext};
}
