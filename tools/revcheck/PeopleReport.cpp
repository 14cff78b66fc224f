#include "Console.h"
#include "Explanation.h"
#include "Report.h"
#include "Text.h"
#include "VerdictFacts.h"

#include <string_view>

namespace norvane {
namespace {

std::string_view colour_of(Status status) noexcept {
    switch (status) {
    case Status::good:
        return "\033[1;32m";
    case Status::revoked:
        return "\033[1;31m";
    case Status::no_check:
        return "\033[1;33m";
    }
    return {};
}

/// Puts a report together line by line.
class Lines {
  public:
    explicit Lines(Colour colour) : colour_(colour) {}

    void headline(Status status, std::string_view text) {
        const std::string_view word = word_of(status);
        const bool coloured = colour_ == Colour::ansi;
        text_ += coloured ? colour_of(status) : "";
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

} // namespace

std::string report_for_people(const CheckedCertificate& certificate, const Verdict& verdict,
                              const Account& account, Colour colour) {
    Lines lines(colour);
    std::string headline = printable(certificate.name);
    if (verdict.status == Status::revoked) {
        headline += ": " + reason_text(verdict.reason_code);
    }
    lines.headline(verdict.status, headline);
    for (const Fact& fact : facts_of(certificate, verdict)) {
        lines.line(fact.label, printable(fact.text));
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
