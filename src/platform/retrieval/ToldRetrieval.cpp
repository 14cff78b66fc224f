#include "platform/retrieval/ToldRetrieval.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <vector>

namespace norvane {
namespace {

struct FailureRow {
    DWORD error;
    const Event& event;
};
constexpr FailureRow failures[] = {
    {ERROR_INTERNET_INVALID_URL, event::url_refused},
    {ERROR_INTERNET_UNRECOGNIZED_SCHEME, event::scheme_not_allowed},
    {ERROR_INTERNET_NAME_NOT_RESOLVED, event::name_not_resolved},
    {ERROR_INTERNET_CANNOT_CONNECT, event::server_not_reached},
    {ERROR_TIMEOUT, event::server_silent},
    {ERROR_INTERNET_SECURITY_CHANNEL_ERROR, event::tls_failed},
    {ERROR_INTERNET_CONNECTION_ABORTED, event::connection_aborted},
    {ERROR_HTTP_REDIRECT_FAILED, event::redirection_failed},
    {CRYPT_E_NOT_FOUND, event::entry_missing},
    {ERROR_ACCESS_DENIED, event::access_denied},
    {ERROR_FILE_NOT_FOUND, event::file_missing},
    {ERROR_FILE_TOO_LARGE, event::response_too_large},
    {CRYPT_E_NO_MATCH, event::response_without_object},
    {ERROR_INVALID_DATA, event::response_outdated},
    {ERROR_MOD_NOT_FOUND, event::transports_missing},
};

constexpr DWORD last_http_status = 999;

bool is_http_status(DWORD error) noexcept {
    return error >= HTTP_E_STATUS_FIRST && error <= HTTP_E_STATUS_FIRST + last_http_status;
}

const Event& failure_event(DWORD error) noexcept {
    if (is_http_status(error)) {
        return event::http_status;
    }
    const auto* const row = std::ranges::find(failures, error, &FailureRow::error);
    return row == std::end(failures) ? event::retrieval_failed : row->event;
}

const Event& success_event(const RetrievalOutcome& outcome, bool cache_only) noexcept {
    if (cache_only) {
        return event::response_cached;
    }
    return outcome.confirmed ? event::response_confirmed : event::retrieved;
}

/// The objects of a response, each as a part.
std::vector<RecordPart> parts_of(const ObjectStore& objects, ObjectKind kind,
                                 std::uint64_t& octets) {
    std::vector<RecordPart> parts;
    const auto add = [&](RecordPart::Kind part_kind, ByteView encoded) {
        parts.push_back({part_kind, "object", encoded});
        octets += encoded.length;
    };
    for (std::uint32_t place = 0;; ++place) {
        if (kind == ObjectKind::crl) {
            const CrlCell* const cell = objects.crl_from(place);
            if (cell == nullptr) {
                return parts;
            }
            add(RecordPart::Kind::crl, cell->object->encoded());
        } else {
            const CertificateCell* const cell = objects.certificate_from(place);
            if (cell == nullptr) {
                return parts;
            }
            add(RecordPart::Kind::certificate, cell->object->encoded());
        }
    }
}

} // namespace

ToldRetrieval::ToldRetrieval(const char* url, ObjectKind kind, DWORD flags,
                             DWORD timeout_ms) noexcept
    : cache_only_((flags & CRYPT_CACHE_ONLY_RETRIEVAL) != 0),
      branch_(
          event::retrieval, record_value("url", std::string_view(url)),
          record_value("from", std::string_view(cache_only_ ? "cache" : "network")),
          record_value("for", std::string_view(kind == ObjectKind::crl ? "crl" : "certificate")),
          record_value("timeout_ms", timeout_ms)) {}

MeasuredRetrieval ToldRetrieval::measure(const RetrievalOutcome& outcome) const {
    const auto taken =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start_).count();
    const std::time_t now = std::time(nullptr);
    const std::time_t received = outcome.response == nullptr ? now : outcome.response->received;
    return {.milliseconds = static_cast<std::uint64_t>(taken),
            .age_seconds = static_cast<std::uint64_t>(std::max<std::time_t>(now - received, 0))};
}

void ToldRetrieval::end(const RetrievalOutcome& outcome, ObjectKind kind) {
    if (!branch_.is_open()) {
        return;
    }
    const MeasuredRetrieval measured = outcome.measured ? *outcome.measured : measure(outcome);
    const RecordPart taken = record_value("milliseconds", measured.milliseconds);
    const std::uint64_t error = outcome.error;
    if (outcome.response == nullptr) {
        const std::uint64_t status = error - HTTP_E_STATUS_FIRST;
        std::vector<RecordPart> parts{taken};
        parts.push_back(is_http_status(outcome.error) ? record_value("status", status)
                                                      : record_value("error", error));
        if (outcome.remembered) {
            note(event::failed_lately);
        }
        if (!outcome.cause.empty()) {
            parts.push_back(record_value("cause", outcome.cause));
        }
        const bool is_absent =
            cache_only_ && outcome.error == static_cast<DWORD>(CRYPT_E_NOT_FOUND);
        branch_.end_with(is_absent ? event::not_in_the_cache : failure_event(outcome.error), parts);
        return;
    }
    std::uint64_t octets = 0;
    std::vector<RecordPart> parts = parts_of(*outcome.response->objects, kind, octets);
    parts.push_back(taken);
    parts.push_back(record_value("octets", octets));
    parts.push_back(record_value("age_seconds", measured.age_seconds));
    branch_.end_with(success_event(outcome, cache_only_), parts);
}

} // namespace norvane
