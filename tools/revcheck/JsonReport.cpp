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

Json event_object(const RecordedEvent& event, const DecisionRecord& record) {
    Json object = {{"code", event.code}};
    if (!event.reference.empty()) {
        object["reference"] = event.reference;
    }
    for (const RecordedEvent::Object& each : event.objects) {
        const RecordedObject& about = record.objects()[each.index];
        Json facts = {{"role", each.role}, {"type", about.is_crl ? "crl" : "certificate"}};
        facts[about.is_crl ? "issuer" : "subject"] = about.name;
        if (!about.is_crl) {
            facts["serial"] = about.serial;
        }
        facts[about.is_crl ? "this_update" : "not_before"] = about.from;
        facts[about.is_crl ? "next_update" : "not_after"] = about.until;
        const std::string sha256 = sha256_of(about);
        facts["sha256"] = sha256.empty() ? Json(nullptr) : Json(sha256);
        object["objects"].push_back(std::move(facts));
    }
    for (const RecordedEvent::Value& value : event.values) {
        object["values"][value.name] = value.text;
    }
    return object;
}

/// What was asked over the network, with how it ended.
Json requests_of(const DecisionRecord& record) {
    Json requests = Json::array();
    for (const RecordedNode& node : record.nodes()) {
        if (node.code == "retrieval" && node.value("from") == "network") {
            Json request = {{"url", node.value("url")}, {"for", node.value("for")}};
            request["outcome"] = node.outcome.code;
            for (const RecordedEvent::Value& value : node.outcome.values) {
                request[value.name] = value.text;
            }
            requests.push_back(std::move(request));
        }
    }
    return requests;
}

/// The nodes from `place` to `end`, all of the same depth, with what is in them. The depth of a
/// record has a limit.
Json tree_of(const DecisionRecord& record, std::size_t place, std::size_t end) {
    Json events = Json::array();
    const auto nodes = record.nodes();
    for (; place < end; place = nodes[place].end) {
        const RecordedNode& node = nodes[place];
        Json event = event_object(node, record);
        if (node.is_branch) {
            event["events"] = tree_of(record, place + 1, node.end);
            event["outcome"] = event_object(node.outcome, record);
        }
        events.push_back(std::move(event));
    }
    return events;
}

void add_account(Json& object, const Account& account) {
    object["reasons"] = Json::array();
    object["requests"] = Json::array();
    if (account.record == nullptr) {
        return;
    }
    const DecisionRecord& record = *account.record;
    object["requests"] = requests_of(record);
    for (const Reason& reason : account.reasons) {
        Json told = event_object(*reason.event, record);
        if (reason.retrieval != nullptr) {
            told["url"] = reason.retrieval->value("url");
        }
        object["reasons"].push_back(std::move(told));
    }
    if (account.whole) {
        object["record"] = {{"events", tree_of(record, 0, record.nodes().size())},
                            {"cut", record.is_cut()}};
    }
}

} // namespace

std::string report_as_json(const CheckedCertificate& certificate, const Verdict& verdict,
                           const Account& account) {
    const CERT_INFO& info = *certificate.context->pCertInfo;
    const bool revoked = verdict.status == Status::revoked;
    const std::string_view reason = revoked ? reason_name(verdict.reason_code) : "";
    Json object = {
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
        {"time", time_text(verdict.time)},
    };
    add_account(object, account);
    // Names may hold what a terminal obeys or does not show, so all but printable ASCII is escaped.
    // A file name may be no UTF-8; JSON has U+FFFD for what is not.
    constexpr bool ascii_only = true;
    return object.dump(-1, ' ', ascii_only, Json::error_handler_t::replace) + "\n";
}

} // namespace norvane
