#include "RecordTree.h"

#include "DrawnText.h"
#include "EventWords.h"
#include "Explanation.h"

#include <algorithm>
#include <string>

namespace norvane {
namespace {

// A phrase has names in it, and they may be of any length; write_objects tells them whole.
constexpr std::size_t phrase_columns = 400;
constexpr std::size_t value_columns = 400;

std::string object_number(std::size_t index) { return "#" + std::to_string(index + 1); }

/// The code, and what else the event says that its phrase need not say.
void write_details(HtmlWriter& out, const RecordedEvent& event) {
    out.line("code", event.code);
    for (const RecordedEvent::Object& object : event.objects) {
        out.line("span", {{"class", "value"}}, object.role + " " + object_number(object.index));
    }
    for (const RecordedEvent::Value& value : event.values) {
        out.line("span", {{"class", "value"}},
                 value.name + " = " + shortened(value.text, value_columns));
    }
    if (!event.reference.empty()) {
        out.line("span", {{"class", "reference"}}, event.reference);
    }
}

void write_event(HtmlWriter& out, const RecordedNode& node, const DecisionRecord& record) {
    out.text(shortened(phrase_of(node, record), phrase_columns));
    const std::string outcome = shortened(phrase_of(node.outcome, record), phrase_columns);
    if (!outcome.empty()) {
        out.text(" \u2014 ");
        out.line("strong", outcome);
    }
    const auto details = out.element("small");
    write_details(out, node);
    if (!node.outcome.code.empty()) {
        out.text(" \u2192 ");
        write_details(out, node.outcome);
    }
}

/// The nodes from `place` to `end`, all of the same depth, with what is in them. The depth of a
/// record has a limit.
void write_nodes(HtmlWriter& out, const DecisionRecord& record, std::size_t place,
                 std::size_t end) {
    const auto nodes = record.nodes();
    for (; place < end; place = nodes[place].end) {
        const RecordedNode& node = nodes[place];
        if (node.end == place + 1) {
            const auto step = out.element("div", {{"class", "step"}});
            write_event(out, node, record);
            continue;
        }
        const auto branch =
            is_quiet(node) ? out.element("details") : out.element("details", {{"open", "open"}});
        {
            const auto summary = out.element("summary");
            write_event(out, node, record);
        }
        write_nodes(out, record, place + 1, node.end);
    }
}

void write_cell(HtmlWriter& out, const char* label, std::string_view text) {
    out.line("td", {{"data-label", label}}, text);
}

} // namespace

void write_tree(HtmlWriter& out, const DecisionRecord& record) {
    out.line("p", {{"class", record.is_cut() ? "warning" : "note"}},
             record.is_cut()
                 ? "The record was cut: the decision was larger than what is kept of one."
                 : "The record is whole. Branches that came to what they were for are closed.");
    const auto tree = out.element("div", {{"class", "tree"}});
    write_nodes(out, record, 0, record.nodes().size());
}

void write_requests(HtmlWriter& out, const DecisionRecord& record) {
    const auto is_request = [](const RecordedNode& node) { return node.code == "retrieval"; };
    if (std::ranges::none_of(record.nodes(), is_request)) {
        out.line("p", {{"class", "note"}},
                 "Nothing was asked, neither of the cache nor of the network.");
        return;
    }
    const auto table = out.element("table", {{"class", "cards"}});
    {
        const auto head = out.element("thead");
        const auto row = out.element("tr");
        for (const char* const label : {"URL", "for", "from", "outcome", "octets", "ms"}) {
            out.line("th", label);
        }
    }
    const auto body = out.element("tbody");
    for (const RecordedNode& node : record.nodes()) {
        if (is_request(node)) {
            const auto row = out.element("tr");
            write_cell(out, "URL", node.value("url"));
            write_cell(out, "for", node.value("for"));
            write_cell(out, "from", node.value("from"));
            write_cell(out, "outcome", shortened(phrase_of(node.outcome, record), phrase_columns));
            write_cell(out, "octets", node.outcome.value("octets"));
            write_cell(out, "ms", node.outcome.value("milliseconds"));
        }
    }
}

void write_objects(HtmlWriter& out, const DecisionRecord& record) {
    const auto table = out.element("table", {{"class", "cards"}});
    {
        const auto head = out.element("thead");
        const auto row = out.element("tr");
        for (const char* const label : {"#", "name", "serial", "validity", "SHA-256"}) {
            out.line("th", label);
        }
    }
    const auto body = out.element("tbody");
    for (std::size_t index = 0; index < record.objects().size(); ++index) {
        const RecordedObject& object = record.objects()[index];
        const auto row = out.element("tr");
        write_cell(out, "#", object_number(index) + (object.is_crl ? " CRL" : " certificate"));
        write_cell(out, "name", object.name);
        write_cell(out, "serial", object.serial);
        write_cell(out, "validity",
                   object.from + " \u2013 " + (object.until.empty() ? "open" : object.until));
        write_cell(out, "SHA-256", sha256_of(object));
    }
}

} // namespace norvane
