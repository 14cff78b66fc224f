#include "PathDrawing.h"

#include "DrawnText.h"
#include "EventWords.h"
#include "Reasons.h"

#include <algorithm>
#include <vector>

namespace norvane {
namespace {

// All lengths are in units of the drawing, which are pixels where there is room for it. A character
// is 0.6 of the size of its font wide.
constexpr std::size_t drawing_width = 340;
constexpr std::size_t margin = 10;
constexpr std::size_t line_height = 15;
constexpr std::size_t first_baseline = 18;
constexpr std::size_t box_padding = 12;
constexpr std::size_t arrow_length = 24;
constexpr std::size_t line_columns = 48;
constexpr std::size_t name_columns = 2 * line_columns;
constexpr std::size_t failure_columns = 5 * line_columns;

/// A certificate or a CRL in a drawing, or the place of one that was not found.
struct Box {
    std::string role;
    const RecordedObject* object = nullptr; ///< null: it was not found
    std::string name{};                     ///< of one that was not found
    std::string failure{};                  ///< empty: none here
    Markup arrow = "";                      ///< what leads here from the box above
};

struct Line {
    Markup kind;
    std::string text;
};

void add_folded(std::vector<Line>& lines, Markup kind, std::string_view text, std::size_t columns) {
    for (std::string& line : folded(shortened(text, columns), line_columns)) {
        lines.push_back({kind, std::move(line)});
    }
}

std::vector<Line> lines_of(const Box& box) {
    std::vector<Line> lines{{"role", box.role}};
    add_folded(lines, "name", box.object == nullptr ? box.name : box.object->name, name_columns);
    if (box.object != nullptr) {
        if (!box.object->is_crl) {
            add_folded(lines, "fact", "serial " + box.object->serial, line_columns);
        }
        const std::string& until = box.object->until;
        lines.push_back(
            {"fact", box.object->from + " \u2013 " + (until.empty() ? "no nextUpdate" : until)});
    }
    if (!box.failure.empty()) {
        add_folded(lines, "failure", "\u2717 " + box.failure, failure_columns);
    }
    return lines;
}

std::size_t height_of(const std::vector<Line>& lines) {
    return lines.size() * line_height + box_padding;
}

/// Draws lines in a frame, which clips what is wider than was reckoned with.
void draw_box(HtmlWriter& out, const Box& box, const std::vector<Line>& lines, std::size_t top) {
    const std::string height = std::to_string(height_of(lines));
    const std::string width = std::to_string(drawing_width);
    const auto frame = out.element(
        "svg", {{"x", "0"}, {"y", std::to_string(top)}, {"width", width}, {"height", height}});
    const std::string kind = box.object == nullptr  ? "box missing"
                             : !box.failure.empty() ? "box failed"
                                                    : "box";
    out.empty("rect", {{"class", kind},
                       {"x", "1"},
                       {"y", "1"},
                       {"rx", "6"},
                       {"width", std::to_string(drawing_width - 2)},
                       {"height", std::to_string(height_of(lines) - 2)}});
    std::size_t baseline = first_baseline;
    for (const Line& line : lines) {
        out.line("text",
                 {{"class", std::string(line.kind.text())},
                  {"x", std::to_string(margin)},
                  {"y", std::to_string(baseline)}},
                 line.text);
        baseline += line_height;
    }
}

void draw_arrow(HtmlWriter& out, Markup label, std::size_t top) {
    constexpr std::size_t x = 30;
    constexpr std::size_t head = 5;
    const std::string bottom = std::to_string(top + arrow_length);
    const std::string middle = std::to_string(x);
    const std::string wings = std::to_string(top + arrow_length - head);
    out.empty("path", {{"class", "arrow"},
                       {"d", "M" + middle + " " + std::to_string(top) + "V" + bottom + "M" +
                                 std::to_string(x - head) + " " + wings + "L" + middle + " " +
                                 bottom + "L" + std::to_string(x + head) + " " + wings}});
    out.line("text",
             {{"class", "fact"},
              {"x", std::to_string(x + margin)},
              {"y", std::to_string(top + first_baseline - 2)}},
             label.text());
}

void draw(HtmlWriter& out, const std::string& caption, const std::vector<Box>& boxes) {
    std::vector<std::vector<Line>> contents;
    std::size_t height = (boxes.size() - 1) * arrow_length;
    for (const Box& box : boxes) {
        contents.push_back(lines_of(box));
        height += height_of(contents.back());
    }
    const auto figure = out.element("figure", {{"class", "path"}});
    out.line("figcaption", shortened(caption, failure_columns));
    const auto drawing = out.element("svg", {{"role", "img"},
                                             {"aria-label", shortened(caption, failure_columns)},
                                             {"viewBox", "0 0 " + std::to_string(drawing_width) +
                                                             " " + std::to_string(height)}});
    std::size_t top = 0;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (i != 0) {
            draw_arrow(out, boxes[i].arrow, top);
            top += arrow_length;
        }
        draw_box(out, boxes[i], contents[i], top);
        top += height_of(contents[i]);
    }
}

/// The certificates that were tried in an attempt, each inside the one before: those around the
/// place at which it was closed or, where none is, those that were accepted.
std::vector<std::size_t> candidates_of(const DecisionRecord& record, const CrlAttempt& attempt) {
    std::vector<std::size_t> around;
    std::vector<std::size_t> accepted;
    const auto nodes = record.nodes();
    for (std::size_t place = attempt.first; place < attempt.end;) {
        const RecordedNode& node = nodes[place];
        if (node.code == "candidate" && !node.objects.empty()) {
            const std::size_t certificate = node.objects.front().index;
            if (attempt.standing == Standing::closed && place <= attempt.place &&
                attempt.place < node.end) {
                around.push_back(certificate);
            }
            if (node.outcome.code == "candidate_accepted") {
                accepted.push_back(certificate);
            }
        }
        place = step_over_inner_question(node, place);
    }
    return around.empty() ? accepted : around;
}

/// What has happened at the node, with the objects that its beginning has told of.
RecordedEvent told_in_full(const RecordedNode& node) {
    RecordedEvent event = happening(node);
    if (node.is_branch) {
        event.objects.insert(event.objects.end(), node.objects.begin(), node.objects.end());
    }
    return event;
}

/// The box of the object that the event tells of under a role of a path; else the last one.
Box& box_of(std::vector<Box>& boxes, const RecordedEvent& event, const DecisionRecord& record) {
    for (const char* const role : {"certificate", "signer"}) {
        if (const auto index = object_in(event, role)) {
            const auto found = std::ranges::find(boxes, &record.objects()[*index], &Box::object);
            if (found != boxes.end()) {
                return *found;
            }
        }
    }
    return boxes.back();
}

/// What a search for an issuer has found: it, or of what did not do what came farthest.
Box issuer_box(const DecisionRecord& record, std::size_t search) {
    const RecordedNode& node = record.nodes()[search];
    Box box{.role = "issuer", .name = std::string(node.value("issuer")), .arrow = "issued by"};
    if (const auto issuer = object_in(node.outcome, "issuer")) {
        box.object = &record.objects()[*issuer];
        return box;
    }
    const auto failure = farthest_failure(record, search, node.end);
    if (!failure) {
        box.failure = "not found";
        return box;
    }
    box.failure = phrase_of(told_in_full(record.nodes()[failure->place]), record);
    const auto tried = candidates_of(
        record,
        {.first = search, .end = node.end, .standing = Standing::closed, .place = failure->place});
    if (!tried.empty()) {
        box.role = "issuer, dropped";
        box.object = &record.objects()[tried.front()];
    }
    return box;
}

/// How a CRL that was used speaks of the certificate.
std::string caption_of(const DecisionRecord& record, const CrlAttempt& attempt) {
    switch (attempt.standing) {
    case Standing::used:
    case Standing::nothing_new:
        return phrase_of(happening(record.nodes()[attempt.place]), record);
    case Standing::closed:
        return "it did not count";
    case Standing::unknown:
        break;
    }
    return "nothing came of it";
}

} // namespace

void draw_issuer(HtmlWriter& out, const DecisionRecord& record, std::size_t question) {
    const auto nodes = record.nodes();
    const auto subject = object_in(nodes[question], "subject");
    if (!subject) {
        return;
    }
    std::vector<Box> boxes{{"certificate", &record.objects()[*subject]}};
    for (std::size_t place = question + 1; place < nodes[question].end; place = nodes[place].end) {
        if (nodes[place].code == "issuer_search") {
            boxes.push_back(issuer_box(record, place));
            break;
        }
    }
    draw(out, "The certificate and its issuer", boxes);
}

void draw_attempt(HtmlWriter& out, const DecisionRecord& record, const CrlAttempt& attempt,
                  const std::string& title) {
    std::vector<Box> boxes{{title, &record.objects()[attempt.crl]}};
    for (const std::size_t certificate : candidates_of(record, attempt)) {
        const bool is_signer = boxes.size() == 1;
        boxes.push_back({.role = is_signer ? "signer" : "CA",
                         .object = &record.objects()[certificate],
                         .arrow = is_signer ? Markup("signed by") : Markup("issued by")});
    }
    if (attempt.standing == Standing::closed) {
        const RecordedEvent event = told_in_full(record.nodes()[attempt.place]);
        box_of(boxes, event, record).failure = phrase_of(event, record);
        if (event.code == "path_without_issuer") {
            boxes.push_back({.role = "not found",
                             .name = std::string(event.value("issuer")),
                             .arrow = "issued by"});
        }
    } else if (boxes.size() > 1) {
        boxes.back().role = boxes.size() == 2 ? "signer, trusted root" : "trusted root";
    }
    draw(out, title + ": " + caption_of(record, attempt), boxes);
}

} // namespace norvane
