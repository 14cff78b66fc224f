#include "TimeLine.h"

#include "DrawnText.h"
#include "Times.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <vector>

namespace norvane {
namespace {

constexpr std::uint64_t ticks_per_second = 10'000'000;
constexpr std::uint64_t shortest_line = 3600 * ticks_per_second;

// Lengths across the line are in pixels; along the line they are in per cent of its length.
constexpr std::size_t row_height = 54;
constexpr std::size_t title_baseline = 15;
constexpr std::size_t dates_baseline = 30;
constexpr std::size_t bar_top = 36;
constexpr std::size_t foot_height = 22;
constexpr std::size_t foot_baseline = 16;
constexpr double least_bar = 0.6;
constexpr double full_length = 100;
constexpr std::size_t title_columns = 44;

std::uint64_t ticks_of(const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime;
}

/// The validity of an object; a border that it does not have is as far away as can be.
struct Validity {
    std::uint64_t from = 0;
    std::uint64_t until = std::numeric_limits<std::uint64_t>::max();
};

Validity validity_of(const RecordedObject& object) {
    Validity validity;
    if (const auto from = parse_time(object.from)) {
        validity.from = ticks_of(*from);
    }
    if (const auto until = parse_time(object.until)) {
        validity.until = ticks_of(*until);
    }
    return validity;
}

/// What of time the line shows.
class Axis {
  public:
    Axis(std::span<const TimeSpan> spans, std::uint64_t moment) : first_(moment), last_(moment) {
        const bool has_crl =
            std::ranges::any_of(spans, [](const TimeSpan& span) { return span.object->is_crl; });
        for (const TimeSpan& span : spans) {
            if (span.object->is_crl || !has_crl) {
                const Validity validity = validity_of(*span.object);
                include(validity.from);
                include(validity.until);
            }
        }
        const std::uint64_t room = std::max((last_ - first_) / 12, shortest_line);
        first_ -= std::min(first_, room);
        last_ += room;
    }

    /// Where a moment lies, in per cent; one that is not shown lies at the end nearest to it.
    [[nodiscard]] double place_of(std::uint64_t moment) const {
        const std::uint64_t shown = std::clamp(moment, first_, last_);
        return full_length * static_cast<double>(shown - first_) /
               static_cast<double>(last_ - first_);
    }
    [[nodiscard]] bool shows(std::uint64_t moment) const {
        return first_ <= moment && moment <= last_;
    }

  private:
    void include(std::uint64_t moment) {
        const Validity open;
        if (moment != open.from && moment != open.until) {
            first_ = std::min(first_, moment);
            last_ = std::max(last_, moment);
        }
    }

    std::uint64_t first_;
    std::uint64_t last_;
};

std::string per_cent(double place) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f%%", place);
    return text.data();
}

struct State {
    Markup kind;
    std::string text;
};

State state_of(const RecordedObject& object, const Validity& validity, std::uint64_t moment) {
    const auto between = [](std::uint64_t early, std::uint64_t late) {
        constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
        const std::uint64_t seconds = std::min((late - early) / ticks_per_second, most);
        return duration_text(static_cast<std::uint32_t>(seconds));
    };
    if (moment < validity.from) {
        return {"bar early", "not yet valid, " + between(moment, validity.from) + " too early"};
    }
    if (moment > validity.until) {
        return {"bar late", "expired, " + between(validity.until, moment) + " before"};
    }
    if (object.until.empty()) {
        return {"bar open", "without an end"};
    }
    return {"bar", object.is_crl ? "current" : "valid"};
}

void draw_text(HtmlWriter& out, Markup kind, const std::string& x, std::size_t y,
               const std::string& text) {
    out.line("text", {{"class", std::string(kind.text())}, {"x", x}, {"y", std::to_string(y)}},
             text);
}

/// A row of the drawing.
struct Row {
    const TimeSpan& span;
    Validity validity;
    State state;
    std::size_t top;
};

void draw_bar(HtmlWriter& out, const Row& row, const Axis& axis) {
    const double from = axis.place_of(row.validity.from);
    const double until = axis.place_of(row.validity.until);
    out.empty("rect", {{"class", std::string(row.state.kind.text())},
                       {"x", per_cent(std::min(from, full_length - least_bar))},
                       {"y", std::to_string(row.top + bar_top)},
                       {"width", per_cent(std::max(until - from, least_bar))},
                       {"height", "11"}});
    const std::size_t baseline = row.top + bar_top + 10;
    if (!axis.shows(row.validity.from)) {
        draw_text(out, "head", "0.2%", baseline, "\u25c2");
    }
    if (!axis.shows(row.validity.until)) {
        draw_text(out, "head last", "99.8%", baseline, "\u25b8");
    }
}

void draw_labels(HtmlWriter& out, const Row& row) {
    const RecordedObject& object = *row.span.object;
    draw_text(out, "role", "0", row.top + title_baseline,
              shortened(row.span.title + ": " + row.state.text, title_columns));
    draw_text(out, "fact", "0", row.top + dates_baseline,
              object.from + " \u2013 " + (object.until.empty() ? "open" : object.until));
}

} // namespace

void draw_time_line(HtmlWriter& out, std::span<const TimeSpan> spans, const FILETIME& moment) {
    const std::uint64_t ticks = ticks_of(moment);
    const Axis axis(spans, ticks);
    const std::size_t foot = spans.size() * row_height;
    const auto drawing = out.element("svg", {{"class", "timeline"},
                                             {"role", "img"},
                                             {"aria-label", "Validity at the moment of the check"},
                                             {"width", "100%"},
                                             {"height", std::to_string(foot + foot_height)}});
    std::vector<Row> rows;
    for (const TimeSpan& span : spans) {
        const Validity validity = validity_of(*span.object);
        rows.push_back(
            {span, validity, state_of(*span.object, validity, ticks), rows.size() * row_height});
    }
    // The moment goes across the bars, and behind the labels.
    for (const Row& row : rows) {
        draw_bar(out, row, axis);
    }
    const double place = axis.place_of(ticks);
    out.empty("line", {{"class", "moment"},
                       {"x1", per_cent(place)},
                       {"x2", per_cent(place)},
                       {"y1", "0"},
                       {"y2", std::to_string(foot + 4)}});
    for (const Row& row : rows) {
        draw_labels(out, row);
    }
    draw_text(out, place > full_length / 2 ? Markup("role last") : Markup("role"), per_cent(place),
              foot + foot_baseline, "check " + time_text(moment));
}

} // namespace norvane
