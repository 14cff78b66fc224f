#include "HtmlReport.h"

#include "CoverageGrid.h"
#include "CrlAttempts.h"
#include "CrlFacts.h"
#include "DrawnText.h"
#include "HelpText.h"
#include "PageStyle.h"
#include "PathDrawing.h"
#include "RecordTree.h"
#include "TimeLine.h"
#include "Times.h"
#include "VerdictFacts.h"

#include "platform/retrieval/Digest.h"

#include <algorithm>
#include <array>

namespace norvane {
namespace {

// What is drawn is drawn of so many; the record has the rest.
constexpr std::size_t most_drawn_crls = 40;
constexpr std::size_t most_drawn_paths = 12;

constexpr std::size_t heading_columns = 200;
constexpr std::size_t issuer_columns = 200;
constexpr std::size_t reason_columns = 600;

std::string class_of(Status status) {
    switch (status) {
    case Status::good:
        return "good";
    case Status::revoked:
        return "revoked";
    case Status::no_check:
        break;
    }
    return "no-check";
}

std::string anchor_of(std::size_t number) { return "certificate-" + std::to_string(number); }

void write_fact(HtmlWriter& out, std::string_view label, std::string_view text) {
    out.line("dt", label);
    out.line("dd", text);
}

void write_verdict(HtmlWriter& out, const CheckedCertificate& certificate, const Verdict& verdict,
                   const Account& account) {
    {
        const auto line = out.element("p", {{"class", "verdict " + class_of(verdict.status)}});
        out.text(word_of(verdict.status));
        if (verdict.status == Status::revoked) {
            out.text(": " + reason_text(verdict.reason_code));
        }
    }
    if (!account.reasons.empty() && account.record != nullptr) {
        const auto list = out.element("ul", {{"class", "reasons"}});
        for (const std::string& reason : reason_lines(account.reasons, *account.record)) {
            out.line("li", shortened(reason, reason_columns));
        }
    }
    const CERT_CONTEXT& context = *certificate.context;
    const std::string_view encoded(reinterpret_cast<const char*>(context.pbCertEncoded),
                                   context.cbCertEncoded);
    const auto facts = out.element("dl");
    write_fact(out, "input", certificate.name);
    for (const Fact& fact : facts_of(certificate, verdict)) {
        write_fact(out, fact.label, fact.text);
    }
    write_fact(out, "SHA-256", to_hex(Digester().add(encoded).finish()));
    write_fact(out, "moment of the check", time_text(verdict.time));
}

/// A CRL of the record under the name that the page has for it, with what the record does not tell.
NamedCrl named(const DecisionRecord& record, std::size_t index, std::size_t number) {
    const RecordedObject& object = record.objects()[index];
    NamedCrl crl{.index = index, .title = "CRL " + std::to_string(number)};
    const CrlHandle context(CertCreateCRLContext(
        X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(object.encoded.data()),
        static_cast<DWORD>(object.encoded.size())));
    if (context == nullptr) {
        crl.number = "cannot be read";
        return crl;
    }
    const auto crl_number = norvane::crl_number(*context->pCrlInfo);
    crl.number = crl_number ? "number " + *crl_number : "without a number";
    crl.is_delta = is_delta(*context->pCrlInfo);
    crl.title = (crl.is_delta ? "delta " : "") + crl.title;
    return crl;
}

void write_crls(HtmlWriter& out, const DecisionRecord& record, std::span<const NamedCrl> crls) {
    const auto list = out.element("dl");
    for (const NamedCrl& crl : crls) {
        const RecordedObject& object = record.objects()[crl.index];
        out.line("dt", crl.title);
        const auto item = out.element("dd");
        out.line("div", crl.number + ", of " + shortened(object.name, issuer_columns));
        out.line("div", {{"class", "digest"}}, "SHA-256 " + sha256_of(object));
    }
}

std::string title_of(std::span<const NamedCrl> crls, std::size_t index) {
    const auto found = std::ranges::find(crls, index, &NamedCrl::index);
    return found == crls.end() ? "CRL" : found->title;
}

/// The CRL of an attempt, with the deltas that were selected for it.
std::string title_of(const DecisionRecord& record, std::span<const NamedCrl> crls,
                     const CrlAttempt& attempt) {
    std::string title = title_of(crls, attempt.crl);
    const auto nodes = record.nodes();
    for (std::size_t place = attempt.branch + 1; place < nodes[attempt.branch].end;
         place = nodes[place].end) {
        const auto delta = object_in(nodes[place], "delta");
        if (nodes[place].code == "delta_selected" && delta) {
            title += ", with " + title_of(crls, *delta);
        }
    }
    return title;
}

/// Of each CRL the attempt that came farthest, if it was used or no other came farther that was not
/// used; in the order of the attempts.
std::vector<CrlAttempt> attempts_to_draw(std::span<const CrlAttempt> attempts) {
    std::vector<CrlAttempt> best;
    for (const CrlAttempt& attempt : attempts) {
        const auto known = std::ranges::find(best, attempt.crl, &CrlAttempt::crl);
        if (known == best.end()) {
            best.push_back(attempt);
        } else if (attempt.came_farther_than(*known)) {
            *known = attempt;
        }
    }
    std::uint16_t farthest = 0;
    for (const CrlAttempt& attempt : best) {
        farthest = std::max(farthest, attempt.distance);
    }
    std::erase_if(best, [farthest](const CrlAttempt& attempt) {
        const bool is_farthest =
            attempt.standing == Standing::closed && attempt.distance == farthest;
        return attempt.standing != Standing::used && !is_farthest;
    });
    return best;
}

void write_paths(HtmlWriter& out, const DecisionRecord& record, std::size_t question,
                 std::span<const CrlAttempt> attempts, std::span<const NamedCrl> crls) {
    const auto drawn = attempts_to_draw(attempts);
    out.line("h3", "Paths");
    {
        const auto row = out.element("div", {{"class", "paths"}});
        draw_issuer(out, record, question);
        for (const CrlAttempt& attempt :
             std::span(drawn).first(std::min(drawn.size(), most_drawn_paths))) {
            draw_attempt(out, record, attempt, title_of(record, crls, attempt));
        }
    }
    if (drawn.size() > most_drawn_paths) {
        out.line("p", {{"class", "note"}},
                 "CRLs whose path is not drawn: " +
                     std::to_string(drawn.size() - most_drawn_paths));
    }
}

void write_drawings(HtmlWriter& out, const DecisionRecord& record, const FILETIME& moment) {
    const std::size_t question = last_question_of(record);
    const auto attempts = attempts_of(record, question);
    std::vector<NamedCrl> crls;
    for (const std::size_t index : crls_of(record, question)) {
        crls.push_back(named(record, index, crls.size() + 1));
    }
    write_paths(out, record, question, attempts, crls);

    const std::span shown = std::span(crls).first(std::min(crls.size(), most_drawn_crls));
    out.line("h3", "Validity");
    std::vector<TimeSpan> spans;
    if (const auto subject = object_in(record.nodes()[question], "subject")) {
        spans.push_back({"certificate", &record.objects()[*subject]});
    }
    for (const NamedCrl& crl : shown) {
        spans.push_back({crl.title, &record.objects()[crl.index]});
    }
    draw_time_line(out, spans, moment);
    write_crls(out, record, shown);

    out.line("h3", "Coverage of reasons");
    if (attempts.empty()) {
        out.line("p", {{"class", "note"}}, "No CRL was tried for this certificate.");
    } else {
        draw_coverage(out, record, attempts, shown);
    }
    if (shown.size() != crls.size()) {
        out.line("p", {{"class", "note"}},
                 "CRLs that are not shown here: " + std::to_string(crls.size() - shown.size()));
    }
}

void write_record(HtmlWriter& out, const DecisionRecord& record, Status status) {
    out.line("h3", "Requests");
    write_requests(out, record);
    out.line("h3", "Record");
    {
        const auto all = status == Status::good ? out.element("details")
                                                : out.element("details", {{"open", "open"}});
        out.line("summary", "What the decision did, step by step");
        write_tree(out, record);
    }
    const auto objects = out.element("details");
    out.line("summary", "Certificates and CRLs of the record");
    write_objects(out, record);
}

} // namespace

void HtmlReport::add(const CheckedCertificate& certificate, const Verdict& verdict,
                     const Account& account) {
    told_.push_back({certificate.name, verdict.status});
    const auto section = sections_.element("section", {{"id", anchor_of(told_.size())}});
    sections_.line("h2", shortened(certificate.name, heading_columns));
    write_verdict(sections_, certificate, verdict, account);
    if (account.record == nullptr || account.record->nodes().empty()) {
        sections_.line("p", {{"class", "note"}},
                       "There is no record of its own. Of a list the record stands with the "
                       "certificate that was looked at last.");
        return;
    }
    write_drawings(sections_, *account.record, verdict.time);
    write_record(sections_, *account.record, verdict.status);
}

void HtmlReport::add_fault(std::string_view name, std::string_view reason) {
    faults_.push_back(std::string(name) + ": " + std::string(reason));
}

std::string HtmlReport::page(const FILETIME& made) const {
    HtmlWriter out;
    out.markup("<!DOCTYPE html>\n");
    {
        const auto html =
            out.element("html", {{"xmlns", "http://www.w3.org/1999/xhtml"}, {"lang", "en"}});
        write_head(out);
        const auto body = out.element("body");
        write_overview(out, made);
        out.add(sections_);
    }
    return out.written();
}

void HtmlReport::write_head(HtmlWriter& out) const {
    const auto head = out.element("head");
    out.empty("meta", {{"charset", "utf-8"}});
    out.empty("meta",
              {{"http-equiv", "Content-Security-Policy"},
               {"content", "default-src 'none'; style-src 'unsafe-inline'; base-uri 'none'; "
                           "form-action 'none'"}});
    out.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    out.empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
    out.empty("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
    out.line("title", "Revocation report");
    const auto style = out.element("style");
    out.markup(page_style);
}

void HtmlReport::write_overview(HtmlWriter& out, const FILETIME& made) const {
    const auto header = out.element("header");
    out.line("h1", "Revocation report");
    out.line("p", {{"class", "note"}},
             "Made at " + time_text(made) + " by " + std::string(program_version));
    {
        const auto list = out.element("ol", {{"class", "overview"}});
        for (std::size_t i = 0; i < told_.size(); ++i) {
            const auto item = out.element("li");
            out.line("span", {{"class", "verdict " + class_of(told_[i].status)}},
                     word_of(told_[i].status));
            out.text(" ");
            out.line("a", {{"href", "#" + anchor_of(i + 1)}},
                     shortened(told_[i].name, heading_columns));
        }
    }
    for (const std::string& note : notes_) {
        out.line("p", {{"class", "warning"}}, note);
    }
    if (!faults_.empty()) {
        out.line("h2", "What could not be read");
        const auto list = out.element("ul", {{"class", "warning"}});
        for (const std::string& fault : faults_) {
            out.line("li", fault);
        }
    }
}

} // namespace norvane
