#include "VerdictFacts.h"

#include "CrlFacts.h"
#include "Text.h"
#include "Times.h"

namespace norvane {
namespace {

std::string crl_text(const CRL_INFO& crl, const CERT_INFO& certificate) {
    const auto number = crl_number(crl);
    std::string text = number ? "number " + *number : "without a number";
    text += ", thisUpdate " + time_text(crl.ThisUpdate);
    text += is_set(crl.NextUpdate) ? ", nextUpdate " + time_text(crl.NextUpdate) : "";
    const std::string issuer = name_text(crl.Issuer);
    const bool indirect = issuer != name_text(certificate.Issuer);
    return text + (indirect ? ", issued by " + issuer : "");
}

std::string entry_text(const Verdict& verdict) {
    if (verdict.entry == nullptr) {
        return "none";
    }
    std::string text =
        verdict.status == Status::revoked ? reason_text(verdict.reason_code) : "taken off the list";
    text += is_set(verdict.entry->RevocationDate)
                ? ", dated " + time_text(verdict.entry->RevocationDate)
                : ", without a date";
    return text + (verdict.entry_in_delta ? ", in the delta CRL" : ", in the base CRL");
}

void add_crls(std::vector<Fact>& facts, const CERT_INFO& certificate, const Verdict& verdict) {
    if (verdict.base_crl == nullptr && verdict.status == Status::no_check) {
        return;
    }
    if (verdict.base_crl == nullptr) {
        facts.push_back({"base CRL", "none was handed out"});
        return;
    }
    facts.push_back({"base CRL", crl_text(*verdict.base_crl->pCrlInfo, certificate)});
    if (verdict.delta_crl != nullptr) {
        facts.push_back({"delta CRL", crl_text(*verdict.delta_crl->pCrlInfo, certificate)});
    }
    facts.push_back({"entry", entry_text(verdict)});
}

} // namespace

std::string_view word_of(Status status) noexcept {
    switch (status) {
    case Status::good:
        return "GOOD";
    case Status::revoked:
        return "REVOKED";
    case Status::no_check:
        return "NO CHECK";
    }
    return {};
}

std::string reason_text(DWORD code) {
    const std::string_view name = reason_name(code);
    return name.empty() ? "reason " + std::to_string(code) : std::string(name);
}

std::vector<Fact> facts_of(const CheckedCertificate& certificate, const Verdict& verdict) {
    const CERT_INFO& info = *certificate.context->pCertInfo;
    std::vector<Fact> facts{{"subject", name_text(info.Subject)},
                            {"issuer", name_text(info.Issuer)},
                            {"serial", serial_text(info.SerialNumber)}};
    add_crls(facts, info, verdict);
    if (verdict.freshness_seconds) {
        facts.push_back({"age", duration_text(*verdict.freshness_seconds) + ", as of " +
                                    time_text(verdict.time)});
    } else {
        facts.push_back({"checked", "as of " + time_text(verdict.time)});
    }
    return facts;
}

} // namespace norvane
