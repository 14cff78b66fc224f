#include "CrlFacts.h"
#include "Report.h"
#include "Text.h"
#include "Times.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace norvane {
namespace {

using Json = nlohmann::ordered_json;

const char* status_word(Status status) noexcept {
    switch (status) {
    case Status::good:
        return "good";
    case Status::revoked:
        return "revoked";
    case Status::no_check:
        return "no_check";
    }
    return "";
}

Json time_or_null(const FILETIME& time) {
    return is_set(time) ? Json(time_text(time)) : Json(nullptr);
}

template <class Value>
Json value_or_null(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

std::string error_text(DWORD error) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08x", error);
    return text.data();
}

Json crl_object(const CRL_CONTEXT* crl) {
    if (crl == nullptr) {
        return nullptr;
    }
    const CRL_INFO& info = *crl->pCrlInfo;
    return {{"number", value_or_null(crl_number(info))},
            {"this_update", time_or_null(info.ThisUpdate)},
            {"next_update", time_or_null(info.NextUpdate)},
            {"issuer", name_text(info.Issuer)}};
}

Json entry_object(const CRL_ENTRY* entry) {
    if (entry == nullptr) {
        return nullptr;
    }
    return {{"serial", serial_text(entry->SerialNumber)},
            {"revocation_date", time_or_null(entry->RevocationDate)}};
}

} // namespace

std::string report_as_json(const CheckedCertificate& certificate, const Verdict& verdict) {
    const CERT_INFO& info = *certificate.context->pCertInfo;
    const bool revoked = verdict.status == Status::revoked;
    const std::string_view reason = revoked ? reason_name(verdict.reason_code) : "";
    const Json object = {
        {"certificate", certificate.name},
        {"subject", name_text(info.Subject)},
        {"issuer", name_text(info.Issuer)},
        {"serial", serial_text(info.SerialNumber)},
        {"status", status_word(verdict.status)},
        {"reason_code", revoked ? Json(verdict.reason_code) : Json(nullptr)},
        {"reason", reason.empty() ? Json(nullptr) : Json(reason)},
        {"error", error_text(verdict.error)},
        {"freshness_seconds", value_or_null(verdict.freshness_seconds)},
        {"base_crl", crl_object(verdict.base_crl.get())},
        {"delta_crl", crl_object(verdict.delta_crl.get())},
        {"entry", entry_object(verdict.entry)},
        {"entry_in_delta", verdict.entry_in_delta},
    };
    // Names may hold what a terminal obeys or does not show, so all but printable ASCII is escaped.
    // A file name may be no UTF-8; JSON has U+FFFD for what is not.
    constexpr bool ascii_only = true;
    return object.dump(-1, ' ', ascii_only, Json::error_handler_t::replace) + "\n";
}

} // namespace norvane
