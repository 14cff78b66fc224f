#include "Console.h"
#include "CrlFacts.h"
#include "Explanation.h"
#include "Report.h"
#include "Text.h"
#include "Times.h"

#include <array>
#include <string_view>

namespace norvane {
namespace {

struct Headline {
    std::string_view word;
    std::string_view colour;
};

Headline headline_of(Status status) noexcept {
    switch (status) {
    case Status::good:
        return {"GOOD", "\033[1;32m"};
    case Status::revoked:
        return {"REVOKED", "\033[1;31m"};
    case Status::no_check:
        return {"NO CHECK", "\033[1;33m"};
    }
    return {};
}

/// Puts a report together line by line.
class Lines {
  public:
    explicit Lines(Colour colour) : colour_(colour) {}

    void headline(Status status, std::string_view text) {
        const auto [word, colour] = headline_of(status);
        const bool coloured = colour_ == Colour::ansi;
        text_ += coloured ? colour : "";
        text_ += word;
        text_ += coloured ? "\033[0m" : "";
        text_.append(headline_width - word.size(), ' ').append(text) += '\n';
    }
    void line(std::string_view label, std::string_view value) {
        text_.append("  ").append(label).append(label_width - label.size(), ' ');
        text_.append(value) += '\n';
    }
    [[nodiscard]] std::string take() { return std::move(text_); }

  private:
    static constexpr std::size_t headline_width = 10;
    static constexpr std::size_t label_width = 11;

    Colour colour_;
    std::string text_;
};

std::string reason_text(DWORD code) {
    const std::string_view name = reason_name(code);
    return name.empty() ? "reason " + std::to_string(code) : std::string(name);
}

std::string crl_text(const CRL_INFO& crl, const CERT_INFO& certificate) {
    const auto number = crl_number(crl);
    std::string text = number ? "number " + *number : "without a number";
    text += ", thisUpdate " + time_text(crl.ThisUpdate);
    text += is_set(crl.NextUpdate) ? ", nextUpdate " + time_text(crl.NextUpdate) : "";
    const std::string issuer = name_text(crl.Issuer);
    const bool indirect = issuer != name_text(certificate.Issuer);
    return text + (indirect ? ", issued by " + printable(issuer) : "");
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

void add_crls(Lines& lines, const CERT_INFO& certificate, const Verdict& verdict) {
    if (verdict.base_crl == nullptr && verdict.status == Status::no_check) {
        return;
    }
    if (verdict.base_crl == nullptr) {
        lines.line("base CRL", "none was handed out");
        return;
    }
    lines.line("base CRL", crl_text(*verdict.base_crl->pCrlInfo, certificate));
    if (verdict.delta_crl != nullptr) {
        lines.line("delta CRL", crl_text(*verdict.delta_crl->pCrlInfo, certificate));
    }
    lines.line("entry", entry_text(verdict));
}

} // namespace

std::string report_for_people(const CheckedCertificate& certificate, const Verdict& verdict,
                              const Account& account, Colour colour) {
    const CERT_INFO& info = *certificate.context->pCertInfo;
    Lines lines(colour);
    std::string headline = printable(certificate.name);
    if (verdict.status == Status::revoked) {
        headline += ": " + reason_text(verdict.reason_code);
    }
    lines.headline(verdict.status, headline);
    lines.line("subject", printable(name_text(info.Subject)));
    lines.line("issuer", printable(name_text(info.Issuer)));
    lines.line("serial", serial_text(info.SerialNumber));
    add_crls(lines, info, verdict);
    if (verdict.freshness_seconds) {
        lines.line("age", duration_text(*verdict.freshness_seconds) + ", as of " +
                              time_text(verdict.time));
    } else {
        lines.line("checked", "as of " + time_text(verdict.time));
    }
    std::string_view label = "why";
    if (account.record == nullptr) {
        return lines.take();
    }
    for (const std::string& reason : reason_lines(account.reasons, *account.record)) {
        lines.line(label, printable(reason));
        label = "";
    }
    return lines.take() +
           (account.whole ? "\n" + explanation(*account.record, Console::output_width()) : "");
}

} // namespace norvane
