#include "CoverageGrid.h"

#include "DrawnText.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace norvane {
namespace {

constexpr std::size_t most_points = 12;
constexpr std::size_t point_columns = 120;
constexpr std::size_t value_columns = 120;

/// A column of the grid: a distribution point, or none.
struct Column {
    AttemptScope scope;
    std::string_view point;

    [[nodiscard]] bool holds(const CrlAttempt& attempt) const {
        return attempt.scope == scope
                   ? attempt.point == point
                   : scope == AttemptScope::point && attempt.scope == AttemptScope::all_points;
    }
};

struct Columns {
    std::vector<Column> shown;
    bool cut = false;
};

Columns columns_of(std::span<const CrlAttempt> attempts) {
    Columns columns;
    bool at_all_points = false;
    for (const CrlAttempt& attempt : attempts) {
        at_all_points = at_all_points || attempt.scope == AttemptScope::all_points;
        const bool is_known = std::ranges::any_of(
            columns.shown, [&](const Column& column) { return column.point == attempt.point; });
        if (attempt.scope != AttemptScope::point || is_known) {
            continue;
        }
        if (columns.shown.size() == most_points) {
            columns.cut = true;
            break;
        }
        columns.shown.push_back({AttemptScope::point, attempt.point});
    }
    if (columns.shown.empty() && at_all_points) {
        columns.shown.push_back({AttemptScope::all_points, ""});
    }
    columns.shown.push_back({AttemptScope::without_point, ""});
    return columns;
}

std::string heading_of(const Column& column) {
    switch (column.scope) {
    case AttemptScope::point:
        return "point " + shortened(column.point, point_columns);
    case AttemptScope::all_points:
        return "all points";
    case AttemptScope::without_point:
        break;
    }
    return "without a point";
}

/// A code as words.
std::string words_in(std::string code) {
    std::ranges::replace(code, '_', ' ');
    return code;
}

void draw_cell(HtmlWriter& out, const DecisionRecord& record, const CrlAttempt& attempt) {
    if (attempt.standing == Standing::unknown) {
        out.line("td", {{"class", "closed"}}, "no outcome");
        return;
    }
    const RecordedEvent& event = happening(record.nodes()[attempt.place]);
    const bool used = attempt.standing == Standing::used;
    const std::string mark = used                                   ? "\u2713 "
                             : attempt.standing == Standing::closed ? "\u2717 "
                                                                    : "";
    const auto cell = out.element("td", {{"class", used ? "used" : "closed"}});
    out.line("strong", mark + words_in(event.code));
    for (const RecordedEvent::Value& value : event.values) {
        out.line("span", {{"class", "value"}},
                 value.name + ": " + shortened(value.text, value_columns));
    }
    if (!event.reference.empty()) {
        out.line("span", {{"class", "reference"}}, event.reference);
    }
}

} // namespace

void draw_coverage(HtmlWriter& out, const DecisionRecord& record,
                   std::span<const CrlAttempt> attempts, std::span<const NamedCrl> crls) {
    const Columns columns = columns_of(attempts);
    {
        const auto scroll = out.element("div", {{"class", "scroll"}});
        const auto table = out.element("table", {{"class", "grid"}});
        {
            const auto row = out.element("tr");
            out.line("th", "CRL");
            for (const Column& column : columns.shown) {
                out.line("th", heading_of(column));
            }
        }
        for (const NamedCrl& crl : crls) {
            if (crl.is_delta) {
                continue;
            }
            const auto row = out.element("tr");
            out.line("th", crl.title);
            for (const Column& column : columns.shown) {
                const CrlAttempt* best = nullptr;
                for (const CrlAttempt& attempt : attempts) {
                    if (attempt.crl == crl.index && column.holds(attempt) &&
                        (best == nullptr || attempt.came_farther_than(*best))) {
                        best = &attempt;
                    }
                }
                if (best != nullptr) {
                    draw_cell(out, record, *best);
                } else {
                    out.line("td", {{"class", "none"}}, "not tried");
                }
            }
        }
    }
    if (columns.cut) {
        out.line("p", "There are more points than the table shows; all stand in the record.");
    }
}

} // namespace norvane
